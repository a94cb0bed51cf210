// SPDX-License-Identifier: MIT
#include "platform/linux/browser.h"

#include "base/platform_error.h"
#include "platform/linux/detached_program.h"
#include "platform/linux/program_lookup.h"

#include <sys/wait.h>

namespace orvanta {
namespace {

constexpr char kActivationToken[] = "XDG_ACTIVATION_TOKEN";

/// With the leave that a click gives to raise a window, which the toolkit keeps in our own
/// environment. Good for one program, so it is taken from there.
EnvironmentVariables withLeaveToRaise(EnvironmentVariables variables) {
    const QByteArray token = qgetenv(kActivationToken);
    if (!token.isEmpty()) {
        qunsetenv(kActivationToken);
        variables.set(kActivationToken, token);
        variables.set("DESKTOP_STARTUP_ID", token);
    }
    return variables;
}

} // namespace

void LinuxBrowser::open(const QUrl& url) {
    // Without a scheme it is no address, and could be taken for an option.
    if (!url.isValid() || url.scheme().isEmpty()) {
        return;
    }
    const EnvironmentVariables& variables = m_environment.variables();
    const auto program = findProgram(variables, "xdg-open");
    if (!program) {
        return reportFailure(QStringLiteral("xdg-open was not found"), url);
    }
    const auto pid = startDetached({*program, url.toEncoded()}, withLeaveToRaise(variables));
    if (!pid) {
        return reportFailure(QStringLiteral("xdg-open could not be started"), url);
    }
    reapLater(*pid, url);
}

void LinuxBrowser::reapLater(pid_t pid, const QUrl& url) {
    const int key = m_nextKey++;
    const auto reap = [this, pid, url, key] {
        int status = 0;
        ::waitpid(pid, &status, WNOHANG);
        // The watch that reports this lives until the call has returned.
        QMetaObject::invokeMethod(
            &m_context, [this, key] { m_running.erase(key); }, Qt::QueuedConnection);
        if (WIFEXITED(status) && WEXITSTATUS(status) != 0) {
            reportFailure(QStringLiteral("xdg-open failed"), url);
        }
    };
    try {
        m_running[key] = watchExit(pid, reap);
    } catch (const PlatformError&) {
        // It stays unreaped until this process ends; that harms less than waiting for it.
    }
}

void LinuxBrowser::reportFailure(const QString& reason, const QUrl& url) {
    if (m_complain) {
        m_complain(QStringLiteral("No browser could be opened (%1); the address is %2")
                       .arg(reason, url.toString(QUrl::FullyEncoded)));
    }
}

} // namespace orvanta
