// SPDX-License-Identifier: MIT
#pragma once

#include "connector/connection_status.h"

#include <QString>

namespace orvanta {

/// The icon in words, for tool tips and screen readers.
QString menuBarAccessibilityLabel(ConnectorMenuState state);

} // namespace orvanta
