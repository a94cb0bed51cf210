// SPDX-License-Identifier: MIT
#pragma once

#include "base/json_value.h"

#include <QByteArray>

#include <memory>

namespace orvanta {

/// Decodes one JSON object (RFC 8259, at most 512 levels deep, an initial byte order mark is
/// skipped). Throws `JsonError` for anything else. Qt's own parser is not used because it accepts
/// texts that are no JSON (`.5`, `1.`, `\x`, line feeds in strings), and rounds large integers.
std::shared_ptr<const JsonObject> parseJsonObject(const QByteArray& bytes);

} // namespace orvanta
