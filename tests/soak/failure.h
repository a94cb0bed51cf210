// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <stdexcept>

namespace orvanta::soak {

/// Something did not happen that should; the run is over.
class Failure : public std::runtime_error {
public:
    explicit Failure(const QString& text) : std::runtime_error(text.toStdString()) {}
};

/// Throws a Failure with `text` unless `holds`.
inline void require(bool holds, const QString& text) {
    if (!holds) {
        throw Failure(text);
    }
}

} // namespace orvanta::soak
