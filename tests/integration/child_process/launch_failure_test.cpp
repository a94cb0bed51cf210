// SPDX-License-Identifier: MIT
#include "tests/integration/child_process/launching_test.h"

#include "base/platform_error.h"

#include <QFile>

#include <cerrno>
#include <sys/resource.h>

namespace orvanta {
namespace {

class LaunchFailureTest : public LaunchingTest {
protected:
    QString makeFile(const QString& name, QFile::Permissions permissions) {
        QFile file(filePath(name));
        EXPECT_TRUE(file.open(QFile::WriteOnly));
        file.write("echo hello\n");
        file.close();
        EXPECT_TRUE(file.setPermissions(permissions));
        return file.fileName();
    }

    /// The launch is refused with this code and description, and that is all that ever happens.
    void expectRefusal(ChildProcessOptions options, int code, const QString& description) {
        const std::set<int> before = openDescriptors();
        try {
            m_launcher->launch(std::move(options));
            ADD_FAILURE() << "launched";
        } catch (const PlatformError& error) {
            EXPECT_EQ(error.domain(), QStringLiteral("posix"));
            EXPECT_EQ(error.code(), code);
            EXPECT_EQ(error.description().toStdString(), description.toStdString());
        }
        EXPECT_EQ(openDescriptors(), before);
        EXPECT_FALSE(haveChildren());
        runLoopFor(std::chrono::milliseconds(100));
        EXPECT_TRUE(m_record.output.isEmpty());
        EXPECT_TRUE(m_record.exits.empty());
    }

    ChildRecord m_record;
};

constexpr auto kReadable = QFile::ReadOwner | QFile::WriteOwner;
constexpr auto kRunnable = kReadable | QFile::ExeOwner;

TEST_F(LaunchFailureTest, MissingProgram) {
    const QString program = filePath(QStringLiteral("node"));
    expectRefusal(
        optionsFor(m_record, program, {}), ENOENT,
        QStringLiteral("“%1” could not be started: No such file or directory.").arg(program));
}

TEST_F(LaunchFailureTest, ProgramThatMayNotBeExecuted) {
    const QString program = makeFile(QStringLiteral("node"), kReadable);
    expectRefusal(optionsFor(m_record, program, {}), EACCES,
                  QStringLiteral("“%1” could not be started: Permission denied.").arg(program));
}

TEST_F(LaunchFailureTest, TextWithoutAnInterpreterIsNotHandedToTheShell) {
    const QString program = makeFile(QStringLiteral("node"), kRunnable);
    expectRefusal(optionsFor(m_record, program, {}), ENOEXEC,
                  QStringLiteral("“%1” could not be started: Exec format error.").arg(program));
}

TEST_F(LaunchFailureTest, MissingWorkingDirectory) {
    auto options = optionsFor(m_record, QStringLiteral(CHILD_PROBE), {});
    options.workingDirectory = filePath(QStringLiteral("gone"));
    expectRefusal(options, ENOENT,
                  QStringLiteral("“%1” could not be started in “%2”: No such file or directory.")
                      .arg(options.executable, options.workingDirectory));
}

TEST_F(LaunchFailureTest, WorkingDirectoryThatIsAFile) {
    auto options = optionsFor(m_record, QStringLiteral(CHILD_PROBE), {});
    options.workingDirectory = makeFile(QStringLiteral("file"), kReadable);
    expectRefusal(options, ENOTDIR,
                  QStringLiteral("“%1” could not be started in “%2”: Not a directory.")
                      .arg(options.executable, options.workingDirectory));
}

TEST_F(LaunchFailureTest, AChildThatCannotBeWatchedIsNotLeftRunning) {
    m_launcher.emplace([](pid_t, std::function<void()>) -> std::unique_ptr<ExitWatch> {
        throw PlatformError(QStringLiteral("posix"), EPERM, QStringLiteral("No watching."));
    });
    expectRefusal(
        optionsFor(m_record, QStringLiteral(CHILD_PROBE), {QStringLiteral("close-output")}), EPERM,
        QStringLiteral("No watching."));
}

/// Lowers the number of the highest descriptor that may be opened, for as long as it lives.
class DescriptorLimit {
public:
    explicit DescriptorLimit(int highest) {
        ::getrlimit(RLIMIT_NOFILE, &m_usual);
        const rlimit tight{static_cast<rlim_t>(highest + 1), m_usual.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &tight);
    }
    ~DescriptorLimit() { ::setrlimit(RLIMIT_NOFILE, &m_usual); }

private:
    rlimit m_usual{};
};

TEST_F(LaunchFailureTest, EveryShortageOfDescriptorsIsReported) {
    const std::set<int> before = openDescriptors();
    // Sanitizers need descriptors to look at a type for the first time, so all types are used once.
    EXPECT_THROW(m_launcher->launch(optionsFor(m_record, filePath(QStringLiteral("gone")), {})),
                 PlatformError);
    ChildRecord first;
    launchShell(first, QStringLiteral("exit 0"));
    ASSERT_TRUE(runLoopUntil([&] { return first.hasExited(); }));
    ASSERT_TRUE(runLoopUntil([&] { return openDescriptors() == before; }));

    const auto options = optionsFor(m_record, QStringLiteral("/bin/sh"),
                                    {QStringLiteral("-c"), QStringLiteral("exit 4")});
    int code = 0;
    const auto isRefused = [&](int highest) {
        const DescriptorLimit limit(highest);
        try {
            m_launcher->launch(options);
            return false;
        } catch (const PlatformError& error) {
            code = error.code();
            return true;
        }
    };
    int highest = 2;
    while (highest < 200 && isRefused(highest)) {
        EXPECT_EQ(code, EMFILE);
        EXPECT_EQ(openDescriptors(), before);
        EXPECT_FALSE(haveChildren());
        ++highest;
    }
    EXPECT_GE(highest, 2 + 4); // two pipes have four ends
    ASSERT_TRUE(runLoopUntil([&] { return m_record.hasExited(); }));
    EXPECT_EQ(m_record.exits, std::vector<int>{4});
}

} // namespace
} // namespace orvanta
