// SPDX-License-Identifier: MIT
#pragma once

#include "platform/identifiers.h"

namespace orvanta {

/// Random UUIDs of the system's source of random numbers. Any thread.
class QtIdentifiers : public Identifiers {
public:
    QString uuid() override;
};

} // namespace orvanta
