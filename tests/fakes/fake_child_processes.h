// SPDX-License-Identifier: MIT
#pragma once

#include "platform/child_process.h"
#include "platform/main_queue.h"

#include <memory>
#include <optional>
#include <vector>

namespace orvanta::fakes {

/// A child that does what the test says.
class FakeChild : public ChildProcess {
public:
    FakeChild(MainQueue& queue, ChildProcessOptions launchedWith)
        : options(std::move(launchedWith)), m_queue(queue) {}

    bool isRunning() const override { return m_running; }
    void terminate() override { ++terminateCount; }

    /// Output arrives on the next turn of the loop.
    void print(const QByteArray& bytes);
    /// Ends the child now; the report comes on the next turn of the loop.
    void exit(int status);
    /// The value of a variable of the child's environment.
    std::optional<QByteArray> variable(const QByteArray& name) const {
        return options.environment.value(name);
    }

    ChildProcessOptions options;
    int terminateCount = 0;

private:
    MainQueue& m_queue;
    bool m_running = true;
};

class FakeChildProcesses : public ChildProcessLauncher {
public:
    explicit FakeChildProcesses(MainQueue& queue) : m_queue(queue) {}

    std::shared_ptr<ChildProcess> launch(ChildProcessOptions options) override;

    /// Every child launched so far, the oldest first.
    std::vector<std::shared_ptr<FakeChild>> children;
    /// When set, launching is refused with this reason.
    std::optional<QString> refusal;

    FakeChild& last() { return *children.back(); }
    int runningCount() const;

private:
    MainQueue& m_queue;
};

} // namespace orvanta::fakes
