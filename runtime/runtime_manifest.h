// SPDX-License-Identifier: MIT
#pragma once

#include "runtime/mac_config_file.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace orvanta {

/// What a channel offers: one runtime and where its archive is.
struct MacRuntimeManifest {
    QString version;
    /// For information; never compared.
    std::optional<QString> channel;
    QString platform;
    QString arch;
    QString archiveUrl;
    /// Of the archive, 64 hexadecimal digits of either case.
    QString sha256;
    std::optional<QString> publishedAt;
    std::optional<QString> notesUrl;
    std::optional<QString> minHostVersion;
    /// An installed runtime below this one must be replaced before it is launched again.
    std::optional<QString> minRuntimeVersion;
    std::optional<QString> requiredReason;

    /// Throws `JsonError` for a missing required member or one of the wrong type. Values are kept
    /// as they are, also empty ones.
    static MacRuntimeManifest decode(const QByteArray& bytes);

    /// True when the archive is for this system and processor, and version and address are given.
    bool matchesThisApp() const;

    bool operator==(const MacRuntimeManifest&) const = default;
};

/// `text` without the slashes at its end; a text of slashes becomes empty.
QString trimmingTrailingSlashes(const QString& text);

/// Where the manifest of the settings' channel is. The channel is taken as it is, so that the
/// result need not be an address.
QString manifestAddress(const MacRuntimeUpdateSettings& settings);

/// True for a well-formed address that says how to get there.
bool isAbsoluteUrl(const QString& text);

/// True for a well-formed http or https address.
bool isWebAddress(const QString& text);

} // namespace orvanta
