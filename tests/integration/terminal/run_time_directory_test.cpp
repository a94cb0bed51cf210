// SPDX-License-Identifier: MIT
#include "platform/posix/run_time_directory.h"

#include "platform/environment.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace orvanta {
namespace {

class RunTimeDirectory : public testing::Test {
protected:
    RunTimeDirectory() { ::setenv("TMPDIR", QFile::encodeName(m_temporary.path()).constData(), 1); }
    ~RunTimeDirectory() override { ::unsetenv("TMPDIR"); }

    std::optional<QString> withSession(const QString& path) const {
        EnvironmentVariables variables;
        variables.set("XDG_RUNTIME_DIR", QFile::encodeName(path));
        return runTimeDirectory(variables, kStateRoot);
    }

    static std::optional<QString> withoutSession(const QString& stateRoot = kStateRoot) {
        return runTimeDirectory({}, stateRoot);
    }

    static const QString kStateRoot;
    QTemporaryDir m_temporary;
};

const QString RunTimeDirectory::kStateRoot = QStringLiteral("/home/a/.local/share/Orvanta");

mode_t modeOf(const QString& path) {
    struct stat status {};
    ::lstat(QFile::encodeName(path).constData(), &status);
    return status.st_mode;
}

TEST_F(RunTimeDirectory, IsTheSessionsOwn) {
    const QTemporaryDir session;
    const QStringList before = QDir(m_temporary.path()).entryList();
    EXPECT_EQ(withSession(session.path()), session.path());
    EXPECT_EQ(QDir(m_temporary.path()).entryList(), before);
}

TEST_F(RunTimeDirectory, IsAPrivateTemporaryOneWithoutASession) {
    const auto directory = withoutSession();
    ASSERT_TRUE(directory);
    EXPECT_TRUE(directory->startsWith(m_temporary.path() + QStringLiteral("/orvanta-")));
    EXPECT_EQ(modeOf(*directory), static_cast<mode_t>(S_IFDIR | 0700));
    EXPECT_EQ(withoutSession(), directory);
    EXPECT_EQ(withSession(QStringLiteral("relative")), directory);
    EXPECT_EQ(withSession(m_temporary.filePath(QStringLiteral("missing"))), directory);
}

TEST_F(RunTimeDirectory, IsAnotherForEveryStateRoot) {
    EXPECT_NE(withoutSession(), withoutSession(QStringLiteral("/home/b/.local/share/Orvanta")));
}

TEST_F(RunTimeDirectory, IsNoneThatOthersMayUse) {
    const QString path = withoutSession().value();
    ASSERT_EQ(::chmod(QFile::encodeName(path).constData(), 0755), 0);
    EXPECT_EQ(withoutSession(), std::nullopt);
}

TEST_F(RunTimeDirectory, IsNoneBehindALink) {
    const QString path = withoutSession().value();
    ASSERT_TRUE(QDir().rmdir(path));
    const QTemporaryDir elsewhere;
    ASSERT_TRUE(QFile::link(elsewhere.path(), path));
    EXPECT_EQ(withoutSession(), std::nullopt);
}

} // namespace
} // namespace orvanta
