// SPDX-License-Identifier: MIT
#pragma once

#include <sys/resource.h>
#include <sys/types.h>

namespace orvanta::tests {

/// A limit of a running process, lowered for as long as this object lives; before and after it is
/// that of the test. Only what the process asks for meanwhile is refused.
class LoweredLimit {
public:
    /// `resource` is one of the RLIMIT_ constants. The test fails when it cannot be set.
    LoweredLimit(pid_t process, __rlimit_resource resource, rlim_t limit);
    ~LoweredLimit();
    LoweredLimit(const LoweredLimit&) = delete;
    LoweredLimit& operator=(const LoweredLimit&) = delete;

private:
    const pid_t m_process;
    const __rlimit_resource m_resource;
    struct rlimit m_before {};
};

/// The smallest number that no descriptor of the process has, as seen over a while: what it opens
/// and closes again now and then counts as free.
rlim_t lowestFreeDescriptor(pid_t process);

/// The time that all threads of the process have spent running so far, in milliseconds.
long processorTimeMs(pid_t process);

} // namespace orvanta::tests
