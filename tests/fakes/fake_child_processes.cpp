// SPDX-License-Identifier: MIT
#include "fakes/fake_child_processes.h"

#include "base/platform_error.h"

#include <algorithm>

namespace orvanta::fakes {

void FakeChild::print(const QByteArray& bytes) {
    m_queue.post([onOutput = options.onOutput, bytes] { onOutput(bytes); });
}

void FakeChild::exit(int status) {
    m_running = false;
    m_queue.post([onExit = options.onExit, status] { onExit(status); });
}

std::shared_ptr<ChildProcess> FakeChildProcesses::launch(ChildProcessOptions options) {
    if (refusal) {
        throw PlatformError(QStringLiteral("fake"), 13, *refusal);
    }
    children.push_back(std::make_shared<FakeChild>(m_queue, std::move(options)));
    return children.back();
}

int FakeChildProcesses::runningCount() const {
    return static_cast<int>(std::count_if(children.begin(), children.end(),
                                          [](const auto& child) { return child->isRunning(); }));
}

} // namespace orvanta::fakes
