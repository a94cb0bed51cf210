// SPDX-License-Identifier: MIT
// install_stall [RUNS [--raw]]: how long the main thread lets its users wait while a runtime of 200
// MB in 5,000 files is seeded, installed and pruned by the real services. Takes about 1 GB of the
// disk per run. With --raw each line holds a phase and one run's values: 99 %, worst, busiest,
// duration.
#include "app/composition.h"
#include "base/platform_error.h"
#include "base/task.h"
#include "bench/install_stall/generated_runtime.h"
#include "bench/install_stall/store_exercise.h"
#include "platform/posix/desktop_services.h"
#include "platform/posix/process_environment.h"
#include "platform/posix/process_setup.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace orvanta::bench {

namespace {

constexpr int kDefaultRuns = 5;

double median(const std::vector<Stalls>& runs, double Stalls::*member) {
    std::vector<double> values;
    for (const Stalls& run : runs) {
        values.push_back(run.*member);
    }
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

double largest(const std::vector<Stalls>& runs, double Stalls::*member) {
    double worst = 0;
    for (const Stalls& run : runs) {
        worst = std::max(worst, run.*member);
    }
    return worst;
}

void print(const Measurements& measurements) {
    std::puts("milliseconds; medians of the runs, and the largest of them all");
    std::printf("%-10s %5s %10s %8s %8s %8s %8s %8s\n", "phase", "runs", "duration", "99 %",
                "worst", "largest", "busiest", "largest");
    for (const auto& [phase, runs] : measurements) {
        std::printf("%-10s %5zu %10.1f %8.2f %8.2f %8.2f %8.2f %8.2f\n", phase.toUtf8().constData(),
                    runs.size(), median(runs, &Stalls::duration), median(runs, &Stalls::ninetyNine),
                    median(runs, &Stalls::worst), largest(runs, &Stalls::worst),
                    median(runs, &Stalls::busiest), largest(runs, &Stalls::busiest));
    }
}

void printRaw(const Measurements& measurements) {
    for (const auto& [phase, runs] : measurements) {
        for (const Stalls& run : runs) {
            std::printf("%s\t%f\t%f\t%f\t%f\n", phase.toUtf8().constData(), run.ninetyNine,
                        run.worst, run.busiest, run.duration);
        }
    }
}

/// Each run has a store of its own and none is removed before the end: extracting a tree soon after
/// a similar one was removed takes several times as long.
Task<> exerciseStores(int runs, QString folder, const GeneratedRuntime& runtime, Platform& platform,
                      Measurements& measurements) {
    Heartbeat heartbeat;
    try {
        for (int run = 0; run < runs; ++run) {
            const QString stateRoot = folder + QStringLiteral("/state-%1").arg(run);
            auto exercise = exerciseStore(runtime.path(), stateRoot, runtime.baseUrl(), platform,
                                          heartbeat, measurements);
            co_await std::move(exercise);
        }
        QCoreApplication::exit(0);
    } catch (const PlatformError& error) {
        std::fprintf(stderr, "install_stall: %s\n", error.description().toUtf8().constData());
        QCoreApplication::exit(1);
    }
}

int run(Environment& environment, int runs, bool isRaw) {
    QTemporaryDir folder;
    // Whoever has set it removes everything at once, later: what is made after a removal is slow.
    folder.setAutoRemove(!qEnvironmentVariableIsSet("BENCH_TREES"));
    GeneratedRuntime runtime;
    if (!runtime.make(folder.path())) {
        return 1;
    }
    Composition composition(environment, makeDesktopServices(environment, [](const QString&) {}),
                            std::nullopt);
    Platform& platform = composition.platform();
    Measurements measurements;
    startTask(platform.mainQueue, [&]() -> Task<> {
        return exerciseStores(runs, folder.path(), runtime, platform, measurements);
    });
    const int status = QCoreApplication::exec();
    if (status == 0) {
        (isRaw ? printRaw : print)(measurements);
    }
    return status;
}

} // namespace

} // namespace orvanta::bench

int main(int argc, char** argv) {
    orvanta::ProcessEnvironment environment;
    orvanta::setUpProcess();
    const QCoreApplication application(argc, argv);
    const int runs = argc > 1 ? std::atoi(argv[1]) : orvanta::bench::kDefaultRuns;
    const bool isRaw = argc > 2 && std::strcmp(argv[2], "--raw") == 0;
    return orvanta::bench::run(environment, std::max(1, runs), isRaw);
}
