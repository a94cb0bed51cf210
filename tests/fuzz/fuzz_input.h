// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <vector>

namespace orvanta::fuzz {

/// An input whose first two bytes decide how the rest is used: they say where it is cut, or which
/// circumstances it meets.
struct FuzzInput {
    explicit FuzzInput(const QByteArray& input);

    std::uint16_t choice = 0; ///< 0 when the input is shorter than two bytes
    QByteArray bytes;         ///< what follows
};

/// `bytes` in pieces of less than `bound` bytes (2 or more), some of them empty. The same `choice`
/// cuts at the same places.
std::vector<QByteArray> piecesOf(const QByteArray& bytes, std::uint16_t choice, qsizetype bound);

/// `bytes` with `length` letters in place of every record separator (0x1E), so that short inputs
/// reach the bounds of what may be long.
QByteArray expanded(QByteArray bytes, qsizetype length);

/// One of `texts`, picked by the byte at `index`, or nothing where the null pointer was picked. A
/// byte that is not there counts as 0.
std::optional<QString> pickedText(const QByteArray& input, int index,
                                  std::initializer_list<const char*> texts);

} // namespace orvanta::fuzz
