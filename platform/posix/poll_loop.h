// SPDX-License-Identifier: MIT
#pragma once

#include "platform/posix/file_descriptor.h"

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace orvanta {

/// Something that lives on a `PollLoop` and waits there. The loop calls all of it, on its thread.
class PollSource {
public:
    using Clock = std::chrono::steady_clock;

    struct Interest {
        int descriptor = -1; ///< -1 for none
        short events = 0;    ///< as poll(2) has them
        Clock::time_point until = Clock::time_point::max();

        bool isNone() const { return descriptor < 0 && until == Clock::time_point::max(); }
    };

    virtual ~PollSource() = default;

    /// What to wait for now; nothing when the loop has no more to do with this source. One that
    /// waits for nothing is let go too, once the loop alone holds it.
    virtual std::optional<Interest> interest() = 0;

    /// Something happened on the descriptor (`isReady`), or the time has come. May be called for
    /// nothing.
    virtual void react(bool isReady) = 0;

    /// The loop ends: close, and drop every callback uncalled.
    virtual void abandon() = 0;
};

/// Waits for many descriptors at once and serves one source after the other.
class PollLoop {
public:
    /// Throws `PlatformError`.
    PollLoop();

    /// Runs until `end` is called.
    void run();

    /// Any thread.
    void add(std::shared_ptr<PollSource> source);

    /// Makes the loop ask its sources anew. Any thread.
    void wake();

    /// Makes `run` return after what it is doing now. Any thread.
    void end();

private:
    bool takeNewSources();
    void waitOnce();

    FileDescriptor m_wakeReadEnd;
    FileDescriptor m_wakeWriteEnd;
    std::vector<std::shared_ptr<PollSource>> m_sources;

    std::mutex m_mutex; ///< guards what follows
    std::vector<std::shared_ptr<PollSource>> m_newSources;
    bool m_hasEnded = false;
};

} // namespace orvanta
