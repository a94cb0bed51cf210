// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

namespace orvanta {

/// What a terminal is told. The menu is a block of lines, each shorter than the terminal is wide;
/// below it is the line on which the user types, where the cursor rests.

/// Rewrites everything from `rowsUp` rows above the cursor on: `above` (which stays in the
/// terminal's history), then `block`, then nothing. The cursor ends on an empty line.
QString repaint(int rowsUp, const QStringList& above, const QStringList& block);

/// Turns the block `before` into `after` and puts `above` over it, without touching what the user
/// has typed so far. Writes only lines that differ; empty when nothing does. All of it together
/// with the user's line must fit on the screen.
QString patch(const QStringList& before, const QStringList& above, const QStringList& after);

} // namespace orvanta
