// SPDX-License-Identifier: MIT
// bench_prune_cost RUNS VERSIONS...: how long the confirmation of a healthy version holds the main
// thread up while it takes so many superfluous versions out of the store. Prints for each run a
// line per number: the number and the milliseconds.
#include "app/composition.h"
#include "base/platform_error.h"
#include "base/task.h"
#include "platform/background_work.h"
#include "platform/main_queue.h"
#include "platform/posix/desktop_services.h"
#include "platform/posix/process_environment.h"
#include "platform/posix/process_setup.h"
#include "runtime/mac_runtime_updater.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>
#include <vector>

namespace orvanta::bench {

namespace {

constexpr int kFilesPerVersion = 40;
constexpr double kNsPerMs = 1e6;

void writeFile(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        throw PlatformError(QStringLiteral("prune_cost"), 1, file.errorString());
    }
}

void makeVersion(const QString& folder) {
    QDir().mkpath(folder);
    for (int index = 0; index < kFilesPerVersion; ++index) {
        writeFile(folder + QStringLiteral("/%1.js").arg(index), "module.exports = {};\n");
    }
}

/// A store whose current version is 1.0.0, with so many others beside it.
void makeStore(const QString& stateRoot, int versions) {
    const QString store = stateRoot + QStringLiteral("/runtime");
    makeVersion(store + QStringLiteral("/versions/1.0.0"));
    for (int index = 0; index < versions; ++index) {
        makeVersion(store + QStringLiteral("/versions/0.%1.0").arg(index));
    }
    writeFile(store + QStringLiteral("/current.json"),
              R"({"currentVersion":"1.0.0","channel":"beta"})");
}

Task<> measure(QString stateRoot, int versions, Platform& platform) {
    makeStore(stateRoot, versions);
    MacRuntimeUpdater updater(QString(), stateRoot, platform);
    QElapsedTimer clock;
    clock.start();
    updater.markRuntimeHealthy(std::nullopt);
    std::printf("%d\t%f\n", versions, static_cast<double>(clock.nsecsElapsed()) / kNsPerMs);
    // What the worker removes from now on must not cost the next one anything.
    auto posted = platform.mainQueue.sleep(Seconds(0));
    co_await std::move(posted);
    std::function<void()> nothing = [] {};
    auto removed = platform.backgroundWork.run(std::move(nothing));
    co_await std::move(removed);
}

Task<> measureAll(int runs, std::vector<int> numbers, QString folder, Platform& platform) {
    try {
        for (int run = 0; run < runs; ++run) {
            for (const int versions : numbers) {
                const QString stateRoot = folder + QStringLiteral("/%1-%2").arg(run).arg(versions);
                auto measurement = measure(stateRoot, versions, platform);
                co_await std::move(measurement);
            }
        }
        QCoreApplication::exit(0);
    } catch (const PlatformError& error) {
        std::fprintf(stderr, "bench_prune_cost: %s\n", error.description().toUtf8().constData());
        QCoreApplication::exit(1);
    }
}

int run(Environment& environment, int runs, const std::vector<int>& numbers) {
    QTemporaryDir folder;
    // Whoever has set it removes everything at once, later: what is made after a removal is slow.
    folder.setAutoRemove(!qEnvironmentVariableIsSet("BENCH_TREES"));
    Composition composition(environment, makeDesktopServices(environment, [](const QString&) {}),
                            std::nullopt);
    Platform& platform = composition.platform();
    startTask(platform.mainQueue,
              [&]() -> Task<> { return measureAll(runs, numbers, folder.path(), platform); });
    return QCoreApplication::exec();
}

} // namespace

} // namespace orvanta::bench

int main(int argc, char** argv) {
    orvanta::ProcessEnvironment environment;
    orvanta::setUpProcess();
    const QCoreApplication application(argc, argv);
    if (argc < 3) {
        std::fputs("usage: bench_prune_cost RUNS VERSIONS...\n", stderr);
        return 2;
    }
    std::vector<int> numbers;
    for (int index = 2; index < argc; ++index) {
        numbers.push_back(std::atoi(argv[index]));
    }
    return orvanta::bench::run(environment, std::atoi(argv[1]), numbers);
}
