// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

namespace orvanta {

/// `text` without anything a terminal would obey: white space becomes a space; other control
/// characters, characters that reorder the line and broken ones become U+FFFD.
QString harmless(const QString& text);

/// Columns that `text` takes. Errs towards too many where terminals differ.
int displayWidth(const QString& text);

/// `text` when it fits into `width` columns, else its beginning and "…". `width` is 1 or more.
QString cutToWidth(const QString& text, int width);

/// Lines of `width` columns or fewer (2 or more), broken at spaces where possible, inside words
/// where not. Nothing but spaces at the breaks is lost. At least one line.
QStringList wrapToWidth(const QString& text, int width);

/// As above, but the last of `maximumLines` lines is cut.
QStringList wrapToWidth(const QString& text, int width, int maximumLines);

/// Lines of `width` columns or fewer, broken wherever the width is reached, spaces kept.
QStringList splitAtWidth(const QString& text, int width);

} // namespace orvanta
