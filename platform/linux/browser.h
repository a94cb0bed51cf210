// SPDX-License-Identifier: MIT
#pragma once

#include "platform/browser.h"
#include "platform/environment.h"
#include "platform/posix/exit_watch.h"

#include <QObject>

#include <functional>
#include <map>
#include <memory>

namespace orvanta {

/// Opens addresses by way of xdg-open, found on the PATH of `environment`. It runs in a session of
/// its own, with the environment given, the last click's leave to raise a window and nothing of
/// ours open, and outlives this process.
/// Main thread only; needs a QCoreApplication.
class LinuxBrowser : public Browser {
public:
    /// `environment` outlives this object. `complain`, which may be empty, is given a line for the
    /// user, with the address, when there is no xdg-open or when it fails.
    LinuxBrowser(const Environment& environment, std::function<void(const QString&)> complain)
        : m_environment(environment), m_complain(std::move(complain)) {}

    void open(const QUrl& url) override;

private:
    void reapLater(pid_t pid, const QUrl& url);
    void reportFailure(const QString& reason, const QUrl& url);

    const Environment& m_environment;
    const std::function<void(const QString&)> m_complain;
    /// Started and not yet reaped, which waits for their exit.
    int m_nextKey = 0;
    /// By a number of our own: the system uses process numbers again.
    std::map<int, std::unique_ptr<ExitWatch>> m_running;
    QObject m_context; ///< what is posted to it is dropped with this object
};

} // namespace orvanta
