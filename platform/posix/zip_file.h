// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace orvanta {

/// Whether the file begins like a zip archive and ends with an archive's whole directory record.
/// False on every error. The tools would also unpack archives of other kinds, what is left of one
/// cut short, and an empty file.
bool isWholeZip(const QString& path);

} // namespace orvanta
