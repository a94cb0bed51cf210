// SPDX-License-Identifier: MIT
#pragma once

#include "platform/archive_tool.h"
#include "simulation/world/network.h"
#include "simulation/world/world_files.h"

#include <QString>

#include <memory>

namespace orvanta::simulation {

/// A complete runtime. Its `server.js` says which version it really is.
std::unique_ptr<FileNode> runtimeTree(const QString& version);
/// The version that the runtime at `root` really is; nothing unless it is complete.
std::optional<QString> realVersion(const WorldFiles& files, const QString& root);

/// What the channel has on offer under the conditions of the moment.
class Channel {
public:
    explicit Channel(const Conditions& conditions) : m_conditions(conditions) {}

    ServerAction manifestAnswer(Moment delay) const;
    ServerAction archiveAnswer(Moment delay, const QString& url) const;

private:
    const Conditions& m_conditions;
};

/// Unpacks the archives of the channel, which say themselves what they hold.
class WorldArchiveTool : public ArchiveTool {
public:
    explicit WorldArchiveTool(WorldFiles& files) : m_files(files) {}
    int extractZip(const QString& archive, const QString& destination) override;
    bool isSelfContained(const QString&) const override { return true; }

private:
    WorldFiles& m_files;
};

} // namespace orvanta::simulation
