// SPDX-License-Identifier: MIT
#pragma once

#include "desktop/desktop_session.h"

#include <QImage>
#include <QRect>

namespace orvanta::tests {

/// A real panel along an edge of the screen with nothing in it but the status tray.
class Panel {
public:
    static constexpr int kHeight = 32;
    enum class Edge { upper, lower };

    /// Writes the panel's configuration; `session` outlives this object.
    explicit Panel(const DesktopSession& session, Edge edge = Edge::upper);
    ~Panel() { kill(); }
    Panel(const Panel&) = delete;
    Panel& operator=(const Panel&) = delete;

    /// Starts it and waits until it takes status icons; false when it does not.
    bool start();
    /// As a crash would end it.
    void kill();
    pid_t process() const { return static_cast<pid_t>(m_process.processId()); }
    /// Whether icons are taken by this panel or any other on the bus.
    bool takesIcons() const;

    /// Where something is drawn on the panel, which without icons is nowhere.
    QRect iconArea(const QImage& screen) const;

private:
    const DesktopSession& m_session;
    const Edge m_edge;
    QProcess m_process;
};

} // namespace orvanta::tests
