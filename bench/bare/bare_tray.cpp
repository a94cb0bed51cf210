// SPDX-License-Identifier: MIT
// bare_tray: the least that a Qt program with an icon and a menu of 16 entries is. Say it is
// started when there is a panel: the toolkit decides at the first icon whether there can be one.

#include "bench/bare/monotonic_log.h"

#include <QApplication>
#include <QMenu>
#include <QPainter>
#include <QSystemTrayIcon>
#include <QTimer>

namespace {

constexpr int kEntries = 16;
constexpr int kPixels = 22;

QIcon disc() {
    QPixmap picture(kPixels, kPixels);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setBrush(Qt::darkGreen);
    painter.drawEllipse(1, 1, kPixels - 2, kPixels - 2);
    return picture;
}

} // namespace

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QMenu menu;
    for (int entry = 1; entry <= kEntries; ++entry) {
        menu.addAction(QStringLiteral("Entry %1").arg(entry));
    }
    QSystemTrayIcon icon(disc());
    icon.setToolTip(QStringLiteral("Bare"));
    icon.setContextMenu(&menu);
    icon.show();
    QTimer::singleShot(0, [] { logNow("turned"); });
    return QApplication::exec();
}
