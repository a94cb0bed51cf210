// SPDX-License-Identifier: MIT
#pragma once

#include "fakes/fake_channel.h"
#include "fakes/fake_world.h"
#include "integration/crash_points/supervised_run.h"
#include "platform/linux/archive_tool.h"
#include "platform/posix/file_manager.h"
#include "runtime/mac_runtime_updater.h"

namespace orvanta {

/// What one start of the application has to do with the store: the real updater, files and archive
/// tool; time, network and worker are fakes, so that all runs in one thread in the same order each
/// time.
class StoreProcess {
public:
    /// `start` tells the starts apart, whose scratch directories have different names. `offered` is
    /// what the channel has, `archive` what there is to download.
    StoreProcess(const QString& resourceRoot, const QString& stateRoot, int start,
                 const QString& offered, const QByteArray& archive);
    ~StoreProcess() { m_world.shutDown(); }
    StoreProcess(const StoreProcess&) = delete;
    StoreProcess& operator=(const StoreProcess&) = delete;

    MacRuntimeUpdater& updater() { return *m_updater; }

    // Operations, each run to its end with all that it leaves to the worker

    /// `launch`, when not null, gets the runtime chosen.
    Report resolve(std::optional<MacRuntimeLaunchConfiguration>* launch = nullptr);
    Report update();
    /// Installs what the channel offers, newer or not.
    Report installAnyway();
    Report markHealthy();
    Report rollBack();

private:
    Report finish(Task<MacRuntimeUpdateResult> task);

    fakes::FakeWorld m_world;
    fakes::FakeChannel m_channel;
    PosixFileManager m_files;
    BsdtarArchiveTool m_archives;
    std::unique_ptr<MacRuntimeUpdater> m_updater;
};

} // namespace orvanta
