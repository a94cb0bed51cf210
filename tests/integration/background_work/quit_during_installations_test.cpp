// SPDX-License-Identifier: MIT
#include "fakes/fake_channel.h"
#include "fakes/fake_world.h"
#include "integration/run_loop.h"
#include "platform/posix/file_manager.h"
#include "platform/qt/background_work.h"
#include "runtime/mac_runtime_updater.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <atomic>
#include <memory>
#include <semaphore>

namespace orvanta {
namespace {

void makeRuntime(const QString& root) {
    for (const char* file : {"local-server/server.js", "local-server/config.installer.json",
                             "local-server/cloudflared", "local-server/views/project-list.html",
                             "local-server/public/index3.html", "node-runtime/node"}) {
        const QString path = root + u'/' + QLatin1String(file);
        QDir().mkpath(path.section(u'/', 0, -2));
        QFile made(path);
        ASSERT_TRUE(made.open(QIODevice::WriteOnly));
        made.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
}

/// Extracts a wrapped runtime, but not before it may.
class SlowArchiveTool : public ArchiveTool {
public:
    int extractZip(const QString&, const QString& destination) override {
        ++began;
        mayGoOn.acquire();
        makeRuntime(destination + QStringLiteral("/w"));
        return 0;
    }
    bool isSelfContained(const QString&) const override {
        ++ended;
        return true;
    }

    std::atomic<int> began{0};
    std::counting_semaphore<> mayGoOn{0};
    mutable std::atomic<int> ended{0};
};

/// How an operation of the updater ended: its message, "resolved", "abandoned", or nothing so far.
using Ending = std::shared_ptr<std::string>;

Task<> observe(Task<MacRuntimeUpdateResult> update, Ending ending) {
    try {
        *ending = (co_await std::move(update)).message.toStdString();
    } catch (const TaskAbandoned&) {
        *ending = "abandoned";
    }
}

Task<> observe(Task<MacRuntimeLaunchConfiguration> launch, Ending ending) {
    try {
        co_await std::move(launch);
        *ending = "resolved";
    } catch (const TaskAbandoned&) {
        *ending = "abandoned";
    } catch (const PlatformError& error) {
        *ending = error.description().toStdString();
    }
}

/// The updater with the real worker and real files. Whatever the worker may still use after the
/// end of the rest lives in this object.
class QuitDuringInstallations : public ::testing::Test {
protected:
    void SetUp() override {
        const QString versions = folder.filePath(QStringLiteral("runtime/versions/1.3.2"));
        makeRuntime(versions);
        files.writeFile(folder.filePath(QStringLiteral("runtime/current.json")),
                        R"({"channel":"beta","currentVersion":"1.3.2"})");
        channel.minRuntimeVersion = QStringLiteral("1.4.0");
        world.http.respond = [this](const fakes::FakeRequest& request) {
            return channel.reply(request);
        };
    }

    /// The operations that still wait are unwound while the updater exists.
    void TearDown() override {
        work.reset();
        world.shutDown();
    }

    Platform platform() {
        return {world.queue,
                world.processes,
                world.http,
                world.serialQueues,
                files,
                world.locations,
                world.environment,
                world.wallClock,
                world.loginItem,
                world.browser,
                world.application,
                world.output,
                *work,
                tool,
                world.identifiers,
                world.digest};
    }
    void startUpdater() {
        work = std::make_unique<QtBackgroundWork>();
        Platform services = platform();
        updater = std::make_unique<MacRuntimeUpdater>(folder.filePath(QStringLiteral("shipped")),
                                                      folder.path(), services);
    }
    bool turnUntil(const std::function<bool()>& condition) {
        return turnLoopUntil([&] {
            world.queue.runUntilIdle();
            return condition();
        });
    }
    std::string current() const {
        return updater->currentState().value().currentVersion.toStdString();
    }

    QTemporaryDir folder;
    fakes::FakeWorld world;
    fakes::FakeChannel channel{QStringLiteral("1.4.0")};
    PosixFileManager files;
    SlowArchiveTool tool;
    std::unique_ptr<QtBackgroundWork> work;
    std::unique_ptr<MacRuntimeUpdater> updater;
};

TEST_F(QuitDuringInstallations, BothAreAbandonedAndTheNextStartInstallsAnew) {
    startUpdater();
    const auto launch = std::make_shared<std::string>();
    const auto asked = std::make_shared<std::string>();
    observe(updater->resolveLaunchConfiguration(), launch);
    observe(updater->applyAvailableUpdate(), asked);
    ASSERT_TRUE(turnUntil([&] { return tool.began == 1; })) // one extracts, one waits
        << *launch << *asked << updater->lastStatus().value_or(QString()).toStdString();
    turnUntil([&] { return world.http.requests.size() == 4; });
    turnLoopFor(std::chrono::milliseconds(20));
    world.queue.runUntilIdle();

    work.reset();
    EXPECT_EQ(*launch, "abandoned");
    EXPECT_EQ(*asked, "abandoned");
    updater.reset();
    tool.mayGoOn.release();
    // The extraction has nobody to tell; what it places is named by no record.
    ASSERT_TRUE(waitUntil([&] {
        return QFile::exists(
            folder.filePath(QStringLiteral("runtime/versions/1.4.0/runtime.json")));
    }));
    turnLoopFor(std::chrono::milliseconds(20));
    EXPECT_EQ(tool.ended, 1);

    startUpdater();
    EXPECT_EQ(current(), "1.3.2");
    tool.mayGoOn.release();
    *asked = "";
    observe(updater->applyAvailableUpdate(), asked);
    ASSERT_TRUE(turnUntil([&] { return !asked->empty(); }));
    EXPECT_EQ(*asked, "Updated to 1.4.0");
    EXPECT_EQ(current(), "1.4.0");
    EXPECT_EQ(updater->currentState()->previousVersion.value().toStdString(), "1.3.2");
    EXPECT_TRUE(
        updater->isValidRuntimeRoot(folder.filePath(QStringLiteral("runtime/versions/1.4.0"))));
    EXPECT_FALSE(QFile::exists(folder.filePath(QStringLiteral("runtime/staging"))));
}

} // namespace
} // namespace orvanta
