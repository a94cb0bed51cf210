// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

namespace orvanta {

/// Whether `received`, all that one receive brought, asks for a restart: it is valid UTF-8 as a
/// whole and begins with "POST /restart ". Nothing after that is looked at.
bool isRestartRequest(const QByteArray& received);

/// The complete HTTP reply to an accepted or a rejected request.
QByteArray controlReply(bool isAccepted);

} // namespace orvanta
