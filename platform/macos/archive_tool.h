// SPDX-License-Identifier: MIT
#pragma once

#include "platform/archive_tool.h"

namespace orvanta {

/// ditto. What is no whole zip archive counts as a failure of the tool, and so do devices, pipes
/// and set-uid files in an archive.
class DittoArchiveTool : public ArchiveTool {
public:
    int extractZip(const QString& archive, const QString& destination) override;
    bool isSelfContained(const QString& directory) const override;
};

} // namespace orvanta
