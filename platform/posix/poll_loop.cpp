// SPDX-License-Identifier: MIT
#include "platform/posix/poll_loop.h"

#include "platform/posix/per_system.h"
#include "platform/posix/posix_error.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <limits>
#include <poll.h>
#include <thread>
#include <utility>

namespace orvanta {
namespace {

using Clock = PollSource::Clock;

constexpr std::chrono::milliseconds kPauseAfterFailure{100};

/// The sources to be asked, each with what it waits for.
struct Round {
    std::vector<std::shared_ptr<PollSource>> sources;
    std::vector<Clock::time_point> times;
    std::vector<pollfd> descriptors;
};

/// In milliseconds as poll(2) wants them, never too early.
int timeUntil(Clock::time_point time) {
    if (time == Clock::time_point::max()) {
        return -1;
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(time - Clock::now()).count();
    return static_cast<int>(std::clamp<std::int64_t>(left, 0, std::numeric_limits<int>::max()));
}

Round ask(std::vector<std::shared_ptr<PollSource>>&& sources) {
    Round round;
    for (auto& source : sources) {
        const auto interest = source->interest();
        if (interest && (!interest->isNone() || source.use_count() > 1)) {
            round.sources.push_back(std::move(source));
            round.times.push_back(interest->until);
            round.descriptors.push_back({interest->descriptor, interest->events, 0});
        }
    }
    return round;
}

void drain(const FileDescriptor& pipe) {
    std::array<char, 64> buffer;
    while (::read(pipe.get(), buffer.data(), buffer.size()) > 0) {
    }
}

} // namespace

PollLoop::PollLoop() {
    int ends[2];
    if (!openPipe(ends)) {
        throw posixError(errno, QStringLiteral("A thread could not be prepared"));
    }
    m_wakeReadEnd = FileDescriptor(ends[0]);
    m_wakeWriteEnd = FileDescriptor(ends[1]);
    ::fcntl(ends[0], F_SETFL, O_NONBLOCK);
    ::fcntl(ends[1], F_SETFL, O_NONBLOCK);
}

void PollLoop::run() {
    while (takeNewSources()) {
        waitOnce();
    }
    for (const auto& source : m_sources) {
        source->abandon();
    }
    m_sources.clear();
}

void PollLoop::add(std::shared_ptr<PollSource> source) {
    {
        const std::lock_guard lock(m_mutex);
        m_newSources.push_back(std::move(source));
    }
    wake();
}

void PollLoop::wake() {
    // A pipe too full for another byte wakes the loop all the same.
    [[maybe_unused]] const auto written = ::write(m_wakeWriteEnd.get(), "", 1);
}

void PollLoop::end() {
    {
        const std::lock_guard lock(m_mutex);
        m_hasEnded = true;
    }
    wake();
}

bool PollLoop::takeNewSources() {
    const std::lock_guard lock(m_mutex);
    std::move(m_newSources.begin(), m_newSources.end(), std::back_inserter(m_sources));
    m_newSources.clear();
    return !m_hasEnded;
}

void PollLoop::waitOnce() {
    Round round = ask(std::exchange(m_sources, {}));
    m_sources = round.sources;
    const auto earliest = std::min_element(round.times.begin(), round.times.end());
    const int timeout = earliest == round.times.end() ? -1 : timeUntil(*earliest);
    round.descriptors.push_back({m_wakeReadEnd.get(), POLLIN, 0});
    if (::poll(round.descriptors.data(), static_cast<nfds_t>(round.descriptors.size()), timeout) <
        0) {
        if (errno != EINTR) {
            // Out of memory or descriptors: waiting for better times must not burn a core.
            std::this_thread::sleep_for(kPauseAfterFailure);
        }
        return;
    }
    drain(m_wakeReadEnd);
    for (std::size_t i = 0; i < round.sources.size(); ++i) {
        const bool isReady = round.descriptors[i].revents != 0;
        if (isReady || round.times[i] <= Clock::now()) {
            round.sources[i]->react(isReady);
        }
    }
}

} // namespace orvanta
