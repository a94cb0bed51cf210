// SPDX-License-Identifier: MIT
#pragma once

#include "platform/archive_tool.h"

namespace orvanta {

/// bsdtar, of Debian's libarchive-tools. Zip archives only: what is none, or has been cut short,
/// counts as a failure of the tool, and so do encrypted members, devices, pipes and links that can
/// lead out of `destination`. Nothing is ever extracted through a link. Set-uid and set-gid bits
/// are dropped.
class BsdtarArchiveTool : public ArchiveTool {
public:
    explicit BsdtarArchiveTool(QString executable = QStringLiteral("/usr/bin/bsdtar"))
        : m_executable(std::move(executable)) {}

    int extractZip(const QString& archive, const QString& destination) override;
    bool isSelfContained(const QString& directory) const override;

private:
    const QString m_executable;
};

} // namespace orvanta
