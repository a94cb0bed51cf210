// SPDX-License-Identifier: MIT
#pragma once

#include "desktop/desktop_session.h"

#include <QImage>
#include <QRect>

namespace orvanta::tests {

/// A real panel along the upper edge of the screen with nothing in it but the status tray.
class Panel {
public:
    static constexpr int kHeight = 32;

    /// Writes the panel's configuration; `session` outlives this object.
    explicit Panel(const DesktopSession& session);
    ~Panel() { kill(); }
    Panel(const Panel&) = delete;
    Panel& operator=(const Panel&) = delete;

    /// Starts it and waits until it takes status icons; false when it does not.
    bool start();
    /// As a crash would end it.
    void kill();
    /// Whether icons are taken by this panel or any other on the bus.
    bool takesIcons() const;

    /// Where something is drawn on the panel, which without icons is nowhere.
    static QRect iconArea(const QImage& screen);

private:
    const DesktopSession& m_session;
    QProcess m_process;
};

} // namespace orvanta::tests
