// SPDX-License-Identifier: MIT
#include "app/icons/menu_bar_icons.h"

namespace orvanta {
namespace {

constexpr int kSizes[] = {ORVANTA_ICON_SIZES};

} // namespace

QString menuBarIconName(ConnectorMenuState state) {
    switch (state) {
    case ConnectorMenuState::online:
        return QStringLiteral("MenuBarOnline");
    case ConnectorMenuState::notPaired:
        return QStringLiteral("MenuBarNotPaired");
    case ConnectorMenuState::offline:
        break;
    }
    return QStringLiteral("MenuBarOffline");
}

QIcon menuBarIcon(ConnectorMenuState state) {
    const QString pattern = QStringLiteral(":/icons/%1/%2.png").arg(menuBarIconName(state));
    QIcon icon;
    for (const int size : kSizes) {
        icon.addFile(pattern.arg(size), QSize(size, size));
    }
    return icon;
}

} // namespace orvanta
