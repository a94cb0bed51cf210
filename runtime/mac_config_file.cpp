// SPDX-License-Identifier: MIT
#include "runtime/mac_config_file.h"

#include "base/json.h"

#include <algorithm>

namespace orvanta {
namespace {

std::optional<MacConfigFile> decodeIfPossible(const std::optional<QByteArray>& bytes) {
    if (!bytes) {
        return std::nullopt;
    }
    try {
        return MacConfigFile::decode(*bytes);
    } catch (const JsonError&) {
        return std::nullopt;
    }
}

bool switchesOff(const std::optional<QString>& variable) {
    return variable && (variable->compare(QStringLiteral("false"), Qt::CaseInsensitive) == 0 ||
                        *variable == QStringLiteral("0"));
}

double positiveOr(double value, double fallback) {
    return value > 0.0 ? value : fallback;
}

} // namespace

MacRuntimeUpdateSettings MacRuntimeUpdateSettings::decode(const JsonReader& section) {
    const MacRuntimeUpdateSettings defaults;
    return {.enabled = section.boolean("enabled").value_or(defaults.enabled),
            .channel = section.string("channel").value_or(defaults.channel),
            .manifestBaseUrl = section.string("manifestBaseUrl").value_or(defaults.manifestBaseUrl),
            .checkOnStartup = section.boolean("checkOnStartup").value_or(defaults.checkOnStartup),
            .checkIntervalHours =
                section.integer("checkIntervalHours").value_or(defaults.checkIntervalHours)};
}

MacRuntimeUpdateSettings
MacRuntimeUpdateSettings::withDefaults(const MacRuntimeUpdateSettings& defaults) const {
    auto settings = *this;
    if (channel.isEmpty()) {
        settings.channel = defaults.channel;
    }
    if (manifestBaseUrl.isEmpty()) {
        settings.manifestBaseUrl = defaults.manifestBaseUrl;
    }
    if (checkIntervalHours < 1) {
        settings.checkIntervalHours = defaults.checkIntervalHours;
    }
    return settings;
}

MacTraySettings MacTraySettings::decode(const JsonReader& section) {
    const MacTraySettings defaults;
    return {.statusPollIntervalSeconds = section.number("statusPollIntervalSeconds")
                                             .value_or(defaults.statusPollIntervalSeconds),
            .httpTimeoutSeconds =
                section.number("httpTimeoutSeconds").value_or(defaults.httpTimeoutSeconds),
            .httpResourceTimeoutSeconds = section.number("httpResourceTimeoutSeconds")
                                              .value_or(defaults.httpResourceTimeoutSeconds)};
}

MacTraySettings MacTraySettings::corrected() const {
    const MacTraySettings defaults;
    return {.statusPollIntervalSeconds =
                positiveOr(statusPollIntervalSeconds, defaults.statusPollIntervalSeconds),
            .httpTimeoutSeconds = positiveOr(httpTimeoutSeconds, defaults.httpTimeoutSeconds),
            .httpResourceTimeoutSeconds =
                positiveOr(httpResourceTimeoutSeconds, defaults.httpResourceTimeoutSeconds)};
}

double MacTraySettings::sessionResourceTimeoutSeconds() const {
    return std::max(httpTimeoutSeconds, httpResourceTimeoutSeconds);
}

MacConfigFile MacConfigFile::decode(const QByteArray& bytes) {
    const auto json = JsonReader::parse(bytes);
    MacConfigFile file;
    if (const auto section = json.object("runtimeUpdates")) {
        file.runtimeUpdates = MacRuntimeUpdateSettings::decode(*section);
    }
    if (const auto section = json.object("tray")) {
        file.tray = MacTraySettings::decode(*section);
    }
    return file;
}

MacRuntimeUpdateSettings
effectiveRuntimeUpdateSettings(const std::optional<QByteArray>& configFile,
                               const std::optional<QString>& enabledVariable) {
    MacRuntimeUpdateSettings settings;
    const auto file = decodeIfPossible(configFile);
    if (file && file->runtimeUpdates) {
        settings = file->runtimeUpdates->withDefaults(settings);
    }
    if (switchesOff(enabledVariable)) {
        settings.enabled = false;
    }
    return settings;
}

MacTraySettings effectiveTraySettings(const std::optional<QByteArray>& configFile) {
    const auto file = decodeIfPossible(configFile);
    return file && file->tray ? file->tray->corrected() : MacTraySettings{};
}

} // namespace orvanta
