// SPDX-License-Identifier: MIT
#include "simulation/runner/run.h"
#include "simulation/runner/shrink.h"

#include <QCoreApplication>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>

namespace {

using namespace orvanta::simulation;
using Clock = std::chrono::steady_clock;

struct Options {
    std::uint64_t firstSeed = 1;
    bool hasSeed = false;
    std::int64_t seeds = 1;
    double minutes = 0;
    bool isTalking = false;
    bool shrinks = true;
    bool replays = false;
    bool stops = false;
};

[[noreturn]] void explain() {
    std::fputs("usage: simulate [--seed S] [--seeds N | --minutes M] [--replay] [--trace]"
               " [--no-shrink] [--stop]\n"
               "  without --seed the seeds come from the clock\n",
               stderr);
    std::exit(2);
}

Options parsed(int argc, char** argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string name = argv[i];
        const char* value = i + 1 < argc ? argv[i + 1] : nullptr;
        if (name == "--trace") {
            options.isTalking = true;
        } else if (name == "--no-shrink") {
            options.shrinks = false;
        } else if (name == "--stop") {
            options.stops = true;
        } else if (name == "--replay") {
            options.replays = true;
        } else if (value == nullptr) {
            explain();
        } else if (name == "--seed") {
            options.firstSeed = std::strtoull(argv[++i], nullptr, 10);
            options.hasSeed = true;
        } else if (name == "--seeds") {
            options.seeds = std::strtoll(argv[++i], nullptr, 10);
        } else if (name == "--minutes") {
            options.minutes = std::strtod(argv[++i], nullptr);
        } else {
            explain();
        }
    }
    if (!options.hasSeed) {
        const auto now = std::chrono::system_clock::now().time_since_epoch();
        options.firstSeed = static_cast<std::uint64_t>(
                                std::chrono::duration_cast<std::chrono::seconds>(now).count()) *
                            1000;
    }
    return options;
}

void report(std::uint64_t seed, const Script& script, const Violation& violation) {
    std::printf("seed %llu fails at %s: %s%s%s\n", static_cast<unsigned long long>(seed),
                written(violation.at).c_str(), violation.rule.c_str(),
                violation.detail.empty() ? "" : ": ", violation.detail.c_str());
    std::printf("again: scripts/simulate.sh --seed %llu --trace\n",
                static_cast<unsigned long long>(seed));
    std::printf("%zu events:\n", script.events.size());
    for (const Event& event : script.events) {
        std::printf("  %s\n", written(event).c_str());
    }
    std::fflush(stdout);
}

/// True when the run was as required.
bool examine(std::uint64_t seed, const Options& options, Moment& simulated) {
    const Script script = scriptOf(seed);
    const Outcome outcome = run(script);
    simulated += outcome.length;
    if (outcome.violation) {
        std::printf("seed %llu: %s\n", static_cast<unsigned long long>(seed),
                    outcome.violation->rule.c_str());
        std::fflush(stdout);
        const Script shortest = options.shrinks ? shrunk(script, *outcome.violation) : script;
        const Outcome again = run(shortest, options.isTalking);
        report(seed, shortest, again.violation.value_or(*outcome.violation));
        return false;
    }
    if (options.isTalking) {
        run(script, true);
    }
    if (options.replays && run(script).fingerprint != outcome.fingerprint) {
        std::printf("seed %llu does not replay\n", static_cast<unsigned long long>(seed));
        return false;
    }
    return true;
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const Options options = parsed(argc, argv);
    const auto begin = Clock::now();
    const auto elapsed = [begin] {
        return std::chrono::duration<double>(Clock::now() - begin).count();
    };
    std::printf("seeds from %llu on\n", static_cast<unsigned long long>(options.firstSeed));
    std::fflush(stdout);
    Moment simulated = 0;
    std::int64_t done = 0;
    std::int64_t failed = 0;
    const auto isOver = [&] {
        if (options.stops && failed > 0) {
            return true;
        }
        return options.minutes > 0 ? elapsed() >= options.minutes * 60 : done >= options.seeds;
    };
    for (; !isOver(); ++done) {
        const std::uint64_t seed = options.firstSeed + static_cast<std::uint64_t>(done);
        failed += examine(seed, options, simulated) ? 0 : 1;
        if (constexpr std::int64_t kStep = 50; done % kStep == kStep - 1) {
            std::printf("%lld seeds, %lld failed, %.0f simulated days\n",
                        static_cast<long long>(done + 1), static_cast<long long>(failed),
                        static_cast<double>(simulated) / static_cast<double>(kDay));
            std::fflush(stdout);
        }
    }
    const double days = static_cast<double>(simulated) / static_cast<double>(kDay);
    const double processor = static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
    std::printf("%lld seeds, %lld failed; %.1f simulated days in %.1f s, %.1f s of them on the "
                "processor: %.0f days a minute of one core\n",
                static_cast<long long>(done), static_cast<long long>(failed), days, elapsed(),
                processor, days * 60 / processor);
    return failed == 0 && done > 0 ? 0 : 1;
}
