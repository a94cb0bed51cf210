// SPDX-License-Identifier: MIT
#include "tests/integration/child_process/launching_test.h"

#include <QFile>

#include <csignal>
#include <sys/wait.h>

namespace orvanta {
namespace {

const QString kProbe = QStringLiteral(CHILD_PROBE);

/// Launchers one after the other with the same directory: what the first leaves running is what a
/// killed process leaves, but still a child of this one.
class LeftoverTest : public LaunchingTest {
protected:
    LeftoverTest() { restartLauncher(); }

    ~LeftoverTest() override {
        for (const pid_t pid : m_sleepers) {
            ::kill(pid, SIGKILL);
            ::waitpid(pid, nullptr, 0);
        }
    }

    void restartLauncher() {
        m_launcher.reset();
        m_launcher.emplace(watchExit, ChildPidFile(m_directory.path()));
    }

    QByteArray pidFile() const {
        QFile file(filePath(QStringLiteral("orvanta-tray.children")));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    void writePidFile(const QByteArray& bytes) const {
        QFile file(filePath(QStringLiteral("orvanta-tray.children")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    /// A child that has said its number and waits for signals.
    pid_t launchSleeper(const QString& program = kProbe, const QByteArray& token = "a") {
        const qsizetype before = m_record.output.size();
        m_launcher->launch(sleeperOptions(program, token));
        EXPECT_TRUE(runLoopUntil([&] { return m_record.output.indexOf('\n', before) > 0; }));
        EXPECT_TRUE(runLoopUntil([&] { return !pidFile().contains(" 0 0\n"); }))
            << "its executable is noted once it has spoken";
        m_sleepers.push_back(m_record.output.mid(before + 4).trimmed().toInt());
        return m_sleepers.back();
    }

    ChildProcessOptions sleeperOptions(const QString& program, const QByteArray& token) {
        auto options = optionsFor(m_record, program, {QStringLiteral("close-output")});
        options.environment.set("TOKEN", token);
        return options;
    }

    void launchAnother() {
        ChildRecord other;
        launchShell(other, QStringLiteral("exit 0"));
        EXPECT_TRUE(runLoopUntil([&other] { return other.hasExited(); }));
        runLoopFor(std::chrono::milliseconds(1));
    }

    ChildRecord m_record;
    std::vector<pid_t> m_sleepers;
};

bool isRunning(pid_t pid) {
    siginfo_t info{};
    return ::waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOHANG | WNOWAIT) == 0 &&
           info.si_pid == 0;
}

/// The signal that ended the child, which is over within seconds or never.
int endingSignal(pid_t pid) {
    siginfo_t info{};
    waitWithoutLoop([pid] { return !isRunning(pid); });
    ::waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOHANG | WNOWAIT);
    return info.si_status;
}

/// `line` with the given field, counted from 0, one greater.
QByteArray withGreaterField(const QByteArray& line, int field) {
    QList<QByteArray> fields = line.trimmed().split(' ');
    fields[field] = QByteArray::number(fields[field].toULongLong() + 1);
    return fields.join(' ') + '\n';
}

TEST_F(LeftoverTest, AChildOfTheKilledPredecessorIsTerminatedAtTheFirstLaunch) {
    const pid_t leftover = launchSleeper();
    restartLauncher();
    EXPECT_TRUE(isRunning(leftover)) << "it may be adopted instead, so nothing happens before";
    launchAnother();
    EXPECT_EQ(endingSignal(leftover), SIGTERM);
}

TEST_F(LeftoverTest, AProcessThatOnlyHasTheSameNumberIsNotTouched) {
    constexpr int kStartTime = 1;
    constexpr int kInode = 3;
    const pid_t other = launchSleeper();
    const QByteArray line = pidFile();
    ASSERT_EQ(line.count(' '), 3) << line.toStdString();
    for (int field = kStartTime; field <= kInode; ++field) {
        m_launcher.reset();
        writePidFile(withGreaterField(line, field));
        restartLauncher();
        launchAnother();
        runLoopFor(std::chrono::milliseconds(50));
        EXPECT_TRUE(isRunning(other)) << "field " << field;
    }
}

TEST_F(LeftoverTest, AChildIsRecognisedAfterItsExecutableWasMovedOrRemoved) {
    const QString program = filePath(QStringLiteral("sleep"));
    const QString moved = filePath(QStringLiteral("moved"));
    ASSERT_TRUE(QFile::copy(kProbe, program));
    const pid_t first = launchSleeper(program);
    ASSERT_TRUE(QFile::rename(program, moved));
    const pid_t second = launchSleeper(moved);
    ASSERT_TRUE(QFile::remove(moved));
    restartLauncher();
    launchAnother();
    EXPECT_EQ(endingSignal(first), SIGTERM);
    EXPECT_EQ(endingSignal(second), SIGTERM);
}

TEST_F(LeftoverTest, AChildBehindAScriptIsRecognised) {
    launchShell(m_record, QStringLiteral("exec " CHILD_PROBE " close-output"));
    ASSERT_TRUE(runLoopUntil([this] { return m_record.contains("\n"); }));
    m_sleepers.push_back(m_record.pid());
    restartLauncher();
    launchAnother();
    EXPECT_EQ(endingSignal(m_record.pid()), SIGTERM);
}

TEST_F(LeftoverTest, AChildBehindAScriptIsRecognisedBeforeItSpeaks) {
    launchShell(m_record, QStringLiteral("exec sleep 60"));
    m_sleepers.push_back(pidFile().split(' ').first().toInt());
    restartLauncher();
    // Once the script has gone over to its program.
    ASSERT_TRUE(waitWithoutLoop([this] {
        return QFile::symLinkTarget(QStringLiteral("/proc/%1/exe").arg(m_sleepers.back()))
            .endsWith(QStringLiteral("/sleep"));
    }));
    launchAnother();
    EXPECT_EQ(endingSignal(m_sleepers.back()), SIGTERM);
}

TEST_F(LeftoverTest, OneThatGoesOnInSpiteOfItsSignalStaysRememberedUntilItIsGone) {
    const auto stubborn =
        launchProbe(m_record, {QStringLiteral("linger"), QStringLiteral("60000")});
    ASSERT_TRUE(runLoopUntil([this] { return m_record.contains("\n"); }));
    const pid_t leftover = m_sleepers.emplace_back(m_record.pid());
    restartLauncher();
    const QByteArray remembered = pidFile();
    ASSERT_NE(remembered, QByteArray());
    launchAnother();
    ASSERT_TRUE(isRunning(leftover)) << "it was to outlive its signal";
    EXPECT_TRUE(pidFile().endsWith(remembered)) << pidFile().toStdString();
    restartLauncher();
    EXPECT_EQ(pidFile(), remembered);
    ::kill(leftover, SIGKILL);
    EXPECT_EQ(endingSignal(leftover), SIGKILL);
    launchAnother();
    m_launcher.reset();
    EXPECT_EQ(pidFile(), QByteArray());
}

TEST_F(LeftoverTest, AChildThatHasItsSignalIsNoLeftover) {
    const auto child = launchProbe(m_record, {QStringLiteral("linger"), QStringLiteral("500")});
    ASSERT_TRUE(runLoopUntil([this] { return m_record.contains("\n"); }));
    ASSERT_NE(pidFile(), QByteArray());
    child->terminate();
    m_launcher.reset();
    EXPECT_EQ(pidFile(), QByteArray());
    EXPECT_EQ(::waitpid(m_record.pid(), nullptr, 0), m_record.pid());
}

TEST_F(LeftoverTest, AChildThatHasExitedIsForgottenWithTheLauncher) {
    const auto child = launchShell(m_record, QStringLiteral("sleep 0.1"));
    ASSERT_NE(pidFile(), QByteArray());
    ASSERT_TRUE(runLoopUntil([this] { return m_record.hasExited(); }));
    m_launcher.reset();
    EXPECT_EQ(pidFile(), QByteArray());
}

TEST_F(LeftoverTest, EveryRunningChildIsRemembered) {
    const pid_t first = launchSleeper();
    const pid_t second = launchSleeper();
    ASSERT_NE(first, second);
    EXPECT_EQ(pidFile().count('\n'), 2);
    restartLauncher();
    launchAnother();
    EXPECT_EQ(endingSignal(first), SIGTERM);
    EXPECT_EQ(endingSignal(second), SIGTERM);
}

/// The predecessor was killed between the launch and the moment it knew the child's number.
TEST_F(LeftoverTest, AChildWhoseNumberWasNeverLearntIsFoundByItsEnvironment) {
    const pid_t expected = launchSleeper(kProbe, "a");
    const pid_t other = launchSleeper(kProbe, "b");
    m_launcher.reset();
    ChildPidFile(m_directory.path()).remember({}, sleeperOptions(kProbe, "a"));
    EXPECT_EQ(pidFile().count('\n'), 1);
    restartLauncher();
    EXPECT_TRUE(isRunning(expected));
    launchAnother();
    EXPECT_EQ(endingSignal(expected), SIGTERM);
    EXPECT_TRUE(isRunning(other));
}

/// Somebody waits for what the child says; nobody waits for our notes.
TEST_F(LeftoverTest, WhatAChildSaysFirstIsHeardBeforeItsExecutableIsNoted) {
    auto options = sleeperOptions(kProbe, "a");
    QByteArray notesWhenHeard;
    const auto record = options.onOutput;
    options.onOutput = [&](const QByteArray& piece) {
        notesWhenHeard = pidFile();
        record(piece);
    };
    m_launcher->launch(std::move(options));
    ASSERT_TRUE(runLoopUntil([this] { return m_record.contains("\n"); }));
    m_sleepers.push_back(m_record.pid());
    EXPECT_TRUE(notesWhenHeard.endsWith(" 0 0\n")) << notesWhenHeard.toStdString();
    EXPECT_TRUE(runLoopUntil([this] { return !pidFile().endsWith(" 0 0\n"); }));
    EXPECT_EQ(pidFile().count('\n'), 1);
}

TEST_F(LeftoverTest, ADamagedFileIsNoReasonNotToLaunch) {
    const QByteArray self = QByteArray::number(::getpid());
    m_launcher.reset();
    writePidFile("\n0 1 2 3\n1 1 1 1\n-1 1 2 3\nx y z w\n\xff\xfe\n4294967296 0 0 0\nlaunching a b "
                 "c\nlaunching\n" +
                 self + "\n" + self + " 1 2\n" + self + " 1 2 3 4\n" + QByteArray(70'000, '7'));
    restartLauncher();
    launchAnother();
    EXPECT_EQ(pidFile().count(self + ' '), 0);
}

TEST_F(LeftoverTest, ADirectoryThatIsNotThereIsNoReasonNotToLaunch) {
    m_launcher.reset();
    m_launcher.emplace(watchExit, ChildPidFile(filePath(QStringLiteral("nowhere"))));
    launchAnother();
}

} // namespace
} // namespace orvanta
