// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <optional>

namespace orvanta {

/// The text of an autostart entry that starts `program` (an absolute path) at login.
QByteArray autostartEntry(const QByteArray& program);

/// What an existing entry, possibly edited by people or settings dialogs, says.
struct AutostartEntryFacts {
    bool isSwitchedOff = false;        ///< hidden, or off in the desktop's settings
    std::optional<QByteArray> tryExec; ///< must be executable, else the desktop skips the entry

    bool operator==(const AutostartEntryFacts&) const = default;
};

AutostartEntryFacts readAutostartEntry(const QByteArray& text);

} // namespace orvanta
