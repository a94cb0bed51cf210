// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

namespace orvanta {

/// Makes `bytes` the contents of the file at `path`, as `FileManager::writeFile` promises. 0 or the
/// system's error number.
int writeInPlace(const QByteArray& path, const QByteArray& bytes);

} // namespace orvanta
