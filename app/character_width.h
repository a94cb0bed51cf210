// SPDX-License-Identifier: MIT
#pragma once

namespace orvanta {

/// Columns that terminals give the character: 0, 1 or 2.
int characterWidth(char32_t character);

} // namespace orvanta
