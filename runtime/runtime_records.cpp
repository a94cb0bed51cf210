// SPDX-License-Identifier: MIT
#include "runtime/runtime_records.h"

#include "base/json.h"
#include "base/json_writer.h"

namespace orvanta {

MacRuntimeCurrentState MacRuntimeCurrentState::decode(const QByteArray& bytes) {
    const auto json = JsonReader::parse(bytes);
    return {.currentVersion = json.requiredString("currentVersion"),
            .previousVersion = json.string("previousVersion"),
            .lastHealthyVersion = json.string("lastHealthyVersion"),
            .channel = json.requiredString("channel"),
            .lastCheckedAt = json.string("lastCheckedAt"),
            .availableVersion = json.string("availableVersion"),
            .updatedAt = json.string("updatedAt"),
            .lastHealthyAt = json.string("lastHealthyAt"),
            .pendingHealthCheck = json.boolean("pendingHealthCheck")};
}

QByteArray MacRuntimeCurrentState::encode() const {
    JsonWriter json;
    json.add("currentVersion", currentVersion);
    json.add("previousVersion", previousVersion);
    json.add("lastHealthyVersion", lastHealthyVersion);
    json.add("channel", channel);
    json.add("lastCheckedAt", lastCheckedAt);
    json.add("availableVersion", availableVersion);
    json.add("updatedAt", updatedAt);
    json.add("lastHealthyAt", lastHealthyAt);
    json.add("pendingHealthCheck", pendingHealthCheck);
    return json.encode();
}

MacRuntimeMetadata MacRuntimeMetadata::decode(const QByteArray& bytes) {
    const auto json = JsonReader::parse(bytes);
    return {.version = json.requiredString("version"),
            .platform = json.requiredString("platform"),
            .arch = json.requiredString("arch"),
            .builtAt = json.string("builtAt"),
            .nodeVersion = json.string("nodeVersion"),
            .cloudflaredVersion = json.string("cloudflaredVersion")};
}

QByteArray MacRuntimeMetadata::encode() const {
    JsonWriter json;
    json.add("version", version);
    json.add("platform", platform);
    json.add("arch", arch);
    json.add("builtAt", builtAt);
    json.add("nodeVersion", nodeVersion);
    json.add("cloudflaredVersion", cloudflaredVersion);
    return json.encode();
}

} // namespace orvanta
