// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>

namespace orvanta {

/// The non-empty lines of one chunk of the connector's output, without their line ends. Bytes that
/// are no UTF-8 become U+FFFD. A chunk stands for itself: a line that goes on in the next chunk is
/// two lines.
QStringList outputLines(const QByteArray& chunk);

/// The port that `line` announces, or nothing. Any number that fits 64 bits signed counts, also 0
/// and those above 65535.
std::optional<std::int64_t> parsePort(const QString& line);

} // namespace orvanta
