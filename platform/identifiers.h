// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace orvanta {

/// Makes names that nothing else has.
class Identifiers {
public:
    virtual ~Identifiers() = default;

    /// A new random UUID, upper case, 36 characters.
    virtual QString uuid() = 0;
};

} // namespace orvanta
