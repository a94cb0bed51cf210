// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <ostream>

/// Makes failed comparisons readable.
inline void PrintTo(const QString& text, std::ostream* stream) {
    *stream << text.toStdString();
}
