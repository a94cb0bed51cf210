// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

namespace orvanta::fuzz {

/// What one fuzzer does with one input; each program defines it. Returns when all is well.
void tryInput(const QByteArray& input);

/// Ends the program unless `condition` holds; the fuzzer then keeps the input. `what` is the rule
/// that was broken.
void require(bool condition, const char* what);

} // namespace orvanta::fuzz
