// SPDX-License-Identifier: MIT
#pragma once

#include "orvanta_build_constants.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>

namespace orvanta {

class JsonReader;

/// The section `runtimeUpdates` of `config.json`. A default-constructed one holds the defaults.
struct MacRuntimeUpdateSettings {
    /// Whether the versioned runtime store is used at all.
    bool enabled = true;
    QString channel = QStringLiteral("beta");
    /// Without a trailing slash in the default; the file may say otherwise.
    QString manifestBaseUrl = QString::fromLatin1(build::kManifestBaseUrl);
    /// Whether the manifest is fetched while the runtime to launch is chosen.
    bool checkOnStartup = true;
    std::int64_t checkIntervalHours = 6;

    /// Throws `JsonError` for a member of the wrong type.
    static MacRuntimeUpdateSettings decode(const JsonReader& section);

    /// A copy with the empty texts and an interval below one hour taken from `defaults`.
    MacRuntimeUpdateSettings withDefaults(const MacRuntimeUpdateSettings& defaults) const;

    bool operator==(const MacRuntimeUpdateSettings&) const = default;
};

/// The section `tray` of `config.json`, in seconds. A default-constructed one holds the defaults.
struct MacTraySettings {
    double statusPollIntervalSeconds = 5.0;
    double httpTimeoutSeconds = 5.0;
    double httpResourceTimeoutSeconds = 8.0;

    /// Throws `JsonError` for a member of the wrong type.
    static MacTraySettings decode(const JsonReader& section);

    /// A copy with every value that is not greater than zero replaced by its default.
    MacTraySettings corrected() const;

    /// The total limit of an HTTP exchange: never shorter than the idle limit.
    double sessionResourceTimeoutSeconds() const;

    bool operator==(const MacTraySettings&) const = default;
};

/// The part of `config.json` that is the tray's business; the connector owns the rest.
struct MacConfigFile {
    std::optional<MacRuntimeUpdateSettings> runtimeUpdates;
    std::optional<MacTraySettings> tray;

    /// Throws `JsonError` when `bytes` are no JSON object or any member of the two sections has
    /// the wrong type. Values are kept as they are, also senseless ones.
    static MacConfigFile decode(const QByteArray& bytes);

    bool operator==(const MacConfigFile&) const = default;
};

/// The settings to go by. `configFile` is the content of `config.json`, nothing when it could not
/// be read; `enabledVariable` is the value of `ORVANTA_RUNTIME_UPDATES_ENABLED`, which can only
/// switch the store off. Never fails: a file that cannot be decoded yields the defaults.
MacRuntimeUpdateSettings
effectiveRuntimeUpdateSettings(const std::optional<QByteArray>& configFile,
                               const std::optional<QString>& enabledVariable);

/// The tray settings to go by, under the same rule for `configFile`.
MacTraySettings effectiveTraySettings(const std::optional<QByteArray>& configFile);

} // namespace orvanta
