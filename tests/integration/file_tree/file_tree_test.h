// SPDX-License-Identifier: MIT
#pragma once

#include "base/platform_error.h"
#include "platform/posix/file_manager.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvanta {

/// A folder of its own for each case, and the file manager under test.
class FileTreeTest : public ::testing::Test {
protected:
    QString path(const QByteArray& name) const {
        return m_directory.filePath(QFile::decodeName(name));
    }
    QByteArray native(const QByteArray& name) const {
        return QFile::encodeName(m_directory.path()) + '/' + name;
    }

    void makeDirectory(const QByteArray& name, mode_t mode = 0755) const {
        ASSERT_EQ(::mkdir(native(name).constData(), 0700), 0);
        ASSERT_EQ(::chmod(native(name).constData(), mode), 0);
    }

    void makeFile(const QByteArray& name, const QByteArray& bytes, mode_t mode = 0644) const {
        QFile file;
        const int descriptor = ::creat(native(name).constData(), 0600);
        ASSERT_GE(descriptor, 0);
        ASSERT_TRUE(file.open(descriptor, QIODevice::WriteOnly, QFileDevice::AutoCloseHandle));
        ASSERT_EQ(file.write(bytes), bytes.size());
        file.close();
        ASSERT_EQ(::chmod(native(name).constData(), mode), 0);
    }

    void makeLink(const QByteArray& target, const QByteArray& name) const {
        ASSERT_EQ(::symlink(target.constData(), native(name).constData()), 0);
    }

    struct stat statusOf(const QByteArray& name) const {
        struct stat status {};
        EXPECT_EQ(::lstat(native(name).constData(), &status), 0) << name.constData();
        return status;
    }

    mode_t modeOf(const QByteArray& name) const { return statusOf(name).st_mode & 07777; }

    bool exists(const QByteArray& name) const {
        struct stat status {};
        return ::lstat(native(name).constData(), &status) == 0;
    }

    QByteArray contentsOf(const QByteArray& name) const {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name.constData();
        return file.readAll();
    }

    /// The description of the error that `operation` ends with; empty if it does not.
    template <typename Operation>
    std::string failureOf(const Operation& operation) const {
        try {
            operation();
            return {};
        } catch (const PlatformError& error) {
            EXPECT_EQ(error.domain(), QStringLiteral("posix"));
            QString description = error.description();
            return description.replace(m_directory.path(), QStringLiteral("~")).toStdString();
        }
    }

    QTemporaryDir m_directory;
    PosixFileManager m_files;
};

} // namespace orvanta
