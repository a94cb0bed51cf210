// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace orvanta {

/// The system's tool for zip archives, run as a child without a shell. Any thread.
class ArchiveTool {
public:
    virtual ~ArchiveTool() = default;

    /// Extracts `archive` into the existing directory `destination`, waits for the tool's end and
    /// returns its exit status; 0 is success. Whatever the archive holds, nothing outside
    /// `destination` is created or changed. Throws `PlatformError` when the tool cannot be started.
    virtual int extractZip(const QString& archive, const QString& destination) = 0;

    /// Whether no link below `directory`, which has been extracted, can lead out of it. Success of
    /// the extraction means the same for its whole destination, but a part of that may refer to
    /// its neighbours, and stand somewhere else without them.
    virtual bool isSelfContained(const QString& directory) const = 0;
};

} // namespace orvanta
