// SPDX-License-Identifier: MIT
#pragma once

#include <QImage>
#include <QList>
#include <QRect>
#include <QString>

#include <memory>

struct xcb_connection_t;

namespace orvanta::tests {

/// What is to be seen on a display.
class Screen {
public:
    explicit Screen(const QString& displayName);
    ~Screen();
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    /// A picture of the whole screen without the pointer; null when the display is gone.
    QImage picture() const;
    /// Where menus are open: windows that appear past any window manager, tool tips too.
    QList<QRect> menus() const;
    /// Where windows are that a window manager would be in charge of.
    QList<QRect> windows() const;

private:
    QList<QRect> topWindows(bool pastAnyManager) const;

    xcb_connection_t* m_connection;
    unsigned m_root = 0;
};

} // namespace orvanta::tests
