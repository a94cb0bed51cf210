// SPDX-License-Identifier: MIT
#pragma once

#include "fakes/fake_background_work.h"
#include "fakes/fake_child_processes.h"
#include "fakes/fake_desktop.h"
#include "fakes/fake_files.h"
#include "fakes/fake_http.h"
#include "fakes/fake_main_queue.h"
#include "fakes/fake_runtime_services.h"
#include "fakes/fake_serial_queues.h"
#include "platform/platform.h"

namespace orvanta::fakes {

/// Everything the logic sees of the world, as a test wants it: a shipped runtime and its
/// configuration template are there, nothing listens on any port.
struct FakeWorld {
    FakeWorld() {
        http.clock = [this] { return queue.now(); };
        files.isInBackground = [this] { return background.isRunningJob(); };
        files.addRuntime(locations.resourceRoot());
    }
    ~FakeWorld() { shutDown(); }

    /// Ends every wait, as the end of the process would.
    void shutDown() {
        queue.shutDown();
        http.shutDown();
        background.shutDown();
        queue.shutDown();
    }

    QString stateRoot() const {
        return locations.applicationSupport() + QStringLiteral("/Orvanta");
    }
    QString configPath() const { return stateRoot() + QStringLiteral("/config.json"); }

    FakeMainQueue queue;
    FakeChildProcesses processes{queue};
    FakeHttp http{queue};
    FakeSerialQueues serialQueues;
    FakeFiles files;
    FakeLocations locations;
    FakeEnvironment environment;
    FakeWallClock wallClock;
    FakeLoginItem loginItem;
    FakeBrowser browser;
    FakeApplicationHost application;
    FakeStandardOutput output;
    FakeBackgroundWork background{queue};
    FakeArchiveTool archives{files};
    FakeIdentifiers identifiers;
    FakeContentDigest digest;
    Platform platform{queue,       processes, http,        serialQueues, files,       locations,
                      environment, wallClock, loginItem,   browser,      application, output,
                      background,  archives,  identifiers, digest};
};

} // namespace orvanta::fakes
