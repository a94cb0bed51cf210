// SPDX-License-Identifier: MIT
#pragma once

#include "unit/runtime/updater_fixture.h"

namespace orvanta {

/// A store that holds 1.3.2, pending, and before it 1.3.1. Requests wait until they are answered;
/// the archive of `channel` is a runtime.
class UpdaterOverlap : public UpdaterTest {
protected:
    void SetUp() override {
        makeStore("1.3.2");
        world.files.addRuntime(versionDirectory(QStringLiteral("1.3.1")));
        auto state = stateOf("1.3.2");
        state.previousVersion = QStringLiteral("1.3.1");
        state.pendingHealthCheck = true;
        writeState(state);
        world.archives.contents.addRuntime(QStringLiteral("/w"));
        world.http.respond = [](const fakes::FakeRequest&) { return std::nullopt; };
    }
    void answer(std::size_t request, const QByteArray& body) {
        world.http.answer(request, {200, body});
        world.queue.runUntilIdle();
    }
    void releaseJob() {
        world.background.releaseOne();
        world.queue.runUntilIdle();
    }
    void releaseAllJobs() {
        while (world.background.heldCount() > 0) {
            releaseJob();
        }
    }
    /// The archive comes as the answer to `request`; while it is placed, `version` becomes current.
    void placeWhileBecoming(std::size_t request, const char* version) {
        world.background.holdsJobs = true;
        answer(request, channel.archive);
        releaseJob(); // the digest
        makeStore(version);
        releaseAllJobs();
    }

    fakes::FakeChannel channel{QStringLiteral("1.4.0")};
};

} // namespace orvanta
