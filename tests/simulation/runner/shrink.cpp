// SPDX-License-Identifier: MIT
#include "simulation/runner/shrink.h"

#include <algorithm>
#include <ctime>

namespace orvanta::simulation {

namespace {

class Shrinker {
public:
    Shrinker(Script script, const Violation& violation)
        : m_best(std::move(script)), m_rule(violation.rule) {
        cutOff(m_best, violation.at);
    }

    Script shrink() {
        bool hasChanged = true;
        for (const Moment longest : {2 * kSecond, 20 * kSecond, 2 * kMinute, kHour}) {
            if (keepIfBroken(hurried(longest))) {
                break;
            }
        }
        dropEvents();
        for (int round = 0; hasChanged && round < 6; ++round) {
            hasChanged = shortenGaps();
            hasChanged = dropEvents() || hasChanged;
            hasChanged = roundMoments() || hasChanged;
        }
        return std::move(m_best);
    }

private:
    static void cutOff(Script& script, Moment moment) {
        script.end = std::min(script.end, moment);
        std::erase_if(script.events, [moment](const Event& event) { return event.at > moment; });
    }

    /// No gap is longer than that.
    Script hurried(Moment longest) const {
        Script script = m_best;
        for (std::size_t i = 1; i < script.events.size(); ++i) {
            const Moment gap = script.events[i].at - script.events[i - 1].at;
            script = gap > longest ? earlier(script, i, gap - longest) : script;
        }
        return script;
    }

    /// Where a bug makes runs slow, a longer script has to do.
    bool isOutOfTime() const {
        constexpr std::clock_t kLongest = 60 * CLOCKS_PER_SEC;
        return std::clock() > m_began + kLongest;
    }

    bool keepIfBroken(Script candidate) {
        if (isOutOfTime()) {
            return false;
        }
        const Outcome outcome = run(candidate);
        if (!outcome.violation || outcome.violation->rule != m_rule) {
            return false;
        }
        cutOff(candidate, outcome.violation->at);
        m_best = std::move(candidate);
        return true;
    }

    /// Takes out halves, quarters and so on, down to single events.
    bool dropEvents() {
        bool hasChanged = false;
        for (std::size_t size = std::max<std::size_t>(m_best.events.size() / 2, 1);; size /= 2) {
            for (std::size_t first = 0; first < m_best.events.size();) {
                Script candidate = m_best;
                const auto from = candidate.events.begin() + static_cast<std::ptrdiff_t>(first);
                const auto count = std::min(size, m_best.events.size() - first);
                candidate.events.erase(from, from + static_cast<std::ptrdiff_t>(count));
                if (keepIfBroken(std::move(candidate))) {
                    hasChanged = true;
                } else {
                    first += size;
                }
            }
            if (size <= 1) {
                return hasChanged;
            }
        }
    }

    /// Everything from the event on comes earlier.
    static Script earlier(Script script, std::size_t first, Moment by) {
        for (std::size_t i = first; i < script.events.size(); ++i) {
            script.events[i].at -= by;
        }
        script.end -= by;
        return script;
    }

    bool shortenGaps() {
        bool hasChanged = false;
        for (std::size_t i = 0; i <= m_best.events.size(); ++i) {
            for (const Moment wanted : {Moment(0), 2 * kSecond, 20 * kSecond, 2 * kMinute}) {
                const Moment before = i == 0 ? 0 : m_best.events[i - 1].at;
                const Moment at = i < m_best.events.size() ? m_best.events[i].at : m_best.end;
                const Moment gap = at - before;
                if (gap > wanted && keepIfBroken(earlier(m_best, i, gap - wanted))) {
                    hasChanged = true;
                    break;
                }
            }
        }
        return hasChanged;
    }

    /// Round numbers read better.
    bool roundMoments() {
        bool hasChanged = false;
        for (std::size_t i = 0; i < m_best.events.size(); ++i) {
            for (const Moment unit : {kSecond, 100 * kMillisecond, kMillisecond}) {
                const Moment excess = m_best.events[i].at % unit;
                if (excess != 0 && keepIfBroken(earlier(m_best, i, excess))) {
                    hasChanged = true;
                    break;
                }
            }
        }
        return hasChanged;
    }

    /// On the processor: what else runs must not make scripts longer.
    std::clock_t m_began = std::clock();
    Script m_best;
    std::string m_rule;
};

} // namespace

Script shrunk(const Script& script, const Violation& violation) {
    return Shrinker(script, violation).shrink();
}

} // namespace orvanta::simulation
