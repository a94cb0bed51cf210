// SPDX-License-Identifier: MIT
#include "platform/linux/browser.h"

#include "base/platform_error.h"
#include "platform/linux/detached_program.h"

#include <sys/wait.h>

namespace orvanta {

void LinuxBrowser::open(const QUrl& url) {
    // Without a scheme it is no address, and could be taken for an option.
    if (!url.isValid() || url.scheme().isEmpty()) {
        return;
    }
    const EnvironmentVariables& variables = m_environment.variables();
    const auto program = findOnPath(variables, "xdg-open");
    const auto pid = program ? startDetached({*program, url.toEncoded()}, variables) : std::nullopt;
    if (pid) {
        reapLater(*pid);
    }
}

void LinuxBrowser::reapLater(pid_t pid) {
    const int key = m_nextKey++;
    const auto reap = [this, pid, key] {
        ::waitpid(pid, nullptr, WNOHANG);
        // The watch that reports this lives until the call has returned.
        QMetaObject::invokeMethod(
            &m_context, [this, key] { m_running.erase(key); }, Qt::QueuedConnection);
    };
    try {
        m_running[key] = watchExit(pid, reap);
    } catch (const PlatformError&) {
        // It stays unreaped until this process ends; that harms less than waiting for it.
    }
}

} // namespace orvanta
