// SPDX-License-Identifier: MIT
#pragma once

#include "connector/connection_status.h"

#include <QIcon>
#include <QString>

namespace orvanta {

/// The name of the picture shown for `state`: "MenuBarOffline", "MenuBarNotPaired" or
/// "MenuBarOnline".
QString menuBarIconName(ConnectorMenuState state);

/// The picture for `state` in all its sizes, 16 to 128 pixels, in its own colours. Every call
/// decodes all of them, which takes about a millisecond; copies share them, so keep the icon.
/// Cannot fail. Needs a QGuiApplication, and its thread.
QIcon menuBarIcon(ConnectorMenuState state);

} // namespace orvanta
