// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QByteArrayList>

#include <optional>

namespace orvanta {

/// The text of an autostart entry that starts `program` (an absolute path) at login.
QByteArray autostartEntry(const QByteArray& program);

/// The same entry switched off. In the user's directory it covers one of the system's.
QByteArray switchedOffAutostartEntry(const QByteArray& program);

/// What an existing entry, possibly edited by people or settings dialogs, says.
struct AutostartEntryFacts {
    /// Hidden, off in the settings of a desktop, or nothing that a desktop would start at all.
    bool isSwitchedOff = false;
    QByteArrayList command;
    std::optional<QByteArray> tryExec; ///< must be executable, else the desktop skips the entry
    std::optional<QByteArrayList> onlyShowIn; ///< desktops
    QByteArrayList notShowIn;                 ///< desktops
    bool isMeantForXfce = false;              ///< whatever the two lists say

    bool operator==(const AutostartEntryFacts&) const = default;
};

AutostartEntryFacts readAutostartEntry(const QByteArray& text);

/// Whether a session that calls itself by the names in `desktops`, the most fitting one first,
/// takes notice of the entry.
bool isMeantFor(const AutostartEntryFacts& facts, const QByteArrayList& desktops);

} // namespace orvanta
