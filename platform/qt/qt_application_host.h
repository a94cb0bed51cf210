// SPDX-License-Identifier: MIT
#pragma once

#include "platform/application_host.h"

#include <QObject>

#include <map>

namespace orvanta {

/// The application on Qt's main loop. Needs a QCoreApplication, which must outlive it. An end that
/// somebody else asks of Qt (the desktop's session, for instance) is announced like our own; so is
/// the toolkit's leaving because the display went away. One at a time.
class QtApplicationHost : public ApplicationHost {
public:
    /// `becomeAccessory` is the desktop's way to show nothing that would have to go.
    explicit QtApplicationHost(std::function<void()> becomeAccessory);
    QtApplicationHost(const QtApplicationHost&) = delete;
    QtApplicationHost& operator=(const QtApplicationHost&) = delete;
    ~QtApplicationHost() override;

    void becomeAccessory() override { m_becomeAccessory(); }

    ObserverToken addWillTerminateObserver(std::function<void()> observer) override;

    /// Also from within an observer; unknown tokens are ignored.
    void removeObserver(ObserverToken token) override;

    /// Every observer still registered is called once. A call made before the loop runs ends the
    /// loop as soon as it does.
    void terminate() override;

private:
    static void tellCurrent();
    static void tellCurrentFromAnyThread();
    void tellObservers();

    std::function<void()> m_becomeAccessory;
    std::map<ObserverToken, std::function<void()>> m_observers;
    ObserverToken m_lastToken = 0;
    QObject m_context; ///< ends the connections with this object
};

} // namespace orvanta
