// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QUrl>

#include <optional>

namespace orvanta {

/// The page that Open Dashboard opens: that of the workspace, or `webAppBaseURL` itself when there
/// is none or its identifier is empty.
QUrl dashboardAddress(const QUrl& webAppBaseURL, const std::optional<QString>& workspaceId);

} // namespace orvanta
