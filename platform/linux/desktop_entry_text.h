// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QMap>

namespace orvanta {

/// How desktop entry files write strings and command lines. All text is UTF-8.

/// A string as the value of a key.
QByteArray escapedValue(const QByteArray& text);

/// One argument of a command line, quoted whatever it holds: desktops expand no variable and no
/// field code in it. What Exec holds is the `escapedValue` of a command line.
QByteArray quotedArgument(const QByteArray& argument);

/// The arguments of a command line, field codes such as %U left out.
QByteArrayList commandArguments(const QByteArray& line);

/// The keys of the group [Desktop Entry] with the strings that their values stand for. Of equal
/// keys the last counts.
QMap<QByteArray, QByteArray> desktopEntryKeys(const QByteArray& text);

} // namespace orvanta
