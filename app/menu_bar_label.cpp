// SPDX-License-Identifier: MIT
#include "app/menu_bar_label.h"

namespace orvanta {

QString menuBarAccessibilityLabel(ConnectorMenuState state) {
    switch (state) {
    case ConnectorMenuState::offline:
        break;
    case ConnectorMenuState::notPaired:
        return QStringLiteral("Orvanta Not Paired");
    case ConnectorMenuState::online:
        return QStringLiteral("Orvanta Online");
    }
    return QStringLiteral("Orvanta Offline");
}

} // namespace orvanta
