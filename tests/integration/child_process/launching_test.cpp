// SPDX-License-Identifier: MIT
#include "tests/integration/child_process/launching_test.h"

#include "platform/posix/process_environment.h"

#include <QEventLoop>
#include <QTimer>

#include <cerrno>
#include <fcntl.h>
#include <sys/wait.h>
#include <thread>

namespace orvanta {

pid_t ChildRecord::pid() const {
    const qsizetype start = output.indexOf("pid ") + 4;
    return output.mid(start, output.indexOf('\n', start) - start).toInt();
}

LaunchingTest::LaunchingTest() : m_launcher(std::in_place, watchExit) {
    // The loop opens descriptors of its own on its first turns.
    runLoopFor(std::chrono::milliseconds(1));
}

ChildProcessOptions LaunchingTest::optionsFor(ChildRecord& record, const QString& executable,
                                              const QStringList& arguments) const {
    ChildProcessOptions options;
    options.executable = executable;
    options.arguments = arguments;
    options.workingDirectory = m_directory.path();
    options.environment = ProcessEnvironment().variables();
    options.onOutput = [&record](const QByteArray& piece) {
        record.output += piece;
        record.largestPiece = std::max(record.largestPiece, piece.size());
    };
    options.onExit = [&record](int status) { record.exits.push_back(status); };
    return options;
}

std::shared_ptr<ChildProcess> LaunchingTest::launchProbe(ChildRecord& record,
                                                         const QStringList& arguments) {
    return m_launcher->launch(optionsFor(record, QStringLiteral(CHILD_PROBE), arguments));
}

std::shared_ptr<ChildProcess> LaunchingTest::launchShell(ChildRecord& record,
                                                         const QString& script) {
    return m_launcher->launch(
        optionsFor(record, QStringLiteral("/bin/sh"), {QStringLiteral("-c"), script}));
}

bool runLoopUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
    QElapsedTimer clock;
    clock.start();
    QEventLoop loop;
    QTimer wake;
    wake.start(std::chrono::milliseconds(5));
    while (!condition() && clock.elapsed() < limit.count()) {
        loop.processEvents(QEventLoop::WaitForMoreEvents);
    }
    return condition();
}

void runLoopFor(std::chrono::milliseconds duration) {
    QEventLoop loop;
    QTimer::singleShot(duration, &loop, [&loop] { loop.quit(); });
    loop.exec();
}

bool haveChildren() {
    siginfo_t info{};
    return ::waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) == 0;
}

bool waitWithoutLoop(const std::function<bool()>& condition) {
    QElapsedTimer clock;
    clock.start();
    while (!condition() && clock.elapsed() < 20000) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return condition();
}

} // namespace orvanta
