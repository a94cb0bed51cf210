// SPDX-License-Identifier: MIT
#pragma once

#include "platform/browser.h"
#include "platform/environment.h"
#include "platform/posix/exit_watch.h"

#include <QObject>

#include <map>
#include <memory>

namespace orvanta {

/// Opens addresses by way of xdg-open, found on the PATH of `environment`. It runs in a session of
/// its own, with the environment given and nothing of ours open, and outlives this process.
/// Without it nothing happens. Main thread only; needs a QCoreApplication.
class LinuxBrowser : public Browser {
public:
    /// `environment` outlives this object.
    explicit LinuxBrowser(const Environment& environment) : m_environment(environment) {}

    void open(const QUrl& url) override;

private:
    void reapLater(pid_t pid);

    const Environment& m_environment;
    /// Started and not yet reaped, which waits for their exit.
    int m_nextKey = 0;
    /// By a number of our own: the system uses process numbers again.
    std::map<int, std::unique_ptr<ExitWatch>> m_running;
    QObject m_context; ///< what is posted to it is dropped with this object
};

} // namespace orvanta
