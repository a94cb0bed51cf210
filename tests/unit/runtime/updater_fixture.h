// SPDX-License-Identifier: MIT
#pragma once

#include "fakes/fake_channel.h"
#include "fakes/fake_world.h"
#include "runtime/mac_runtime_updater.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <exception>
#include <memory>
#include <string>

namespace orvanta {

/// An updater in a world with a complete shipped runtime, no store and an unreachable channel.
class UpdaterTest : public ::testing::Test {
protected:
    void TearDown() override { world.shutDown(); }

    // The world

    QString inStore(const QString& path) const {
        return world.stateRoot() + QStringLiteral("/runtime/") + path;
    }
    QString versionDirectory(const QString& name) const {
        return inStore(QStringLiteral("versions/") + name);
    }
    QString currentJson() const { return inStore(QStringLiteral("current.json")); }
    QString shippedRecord() const {
        return world.locations.resourceRoot() + QStringLiteral("/local-server/runtime.json");
    }
    void ship(const char* version) {
        world.files.addFile(shippedRecord(),
                            QByteArray(R"({"platform":"any","arch":"any","builtAt":"then",)") +
                                R"("nodeVersion":"v20","version":")" + version + "\"}");
    }
    void writeState(const MacRuntimeCurrentState& state) {
        world.files.addFile(currentJson(), state.encode());
    }
    /// A store whose current version is complete.
    void makeStore(const char* version) {
        world.files.addRuntime(versionDirectory(QString::fromLatin1(version)));
        writeState(stateOf(version));
    }
    void serve(const fakes::FakeChannel& channel) {
        world.http.respond = [channel](const fakes::FakeRequest& request) {
            return channel.reply(request).value_or(HttpReply{});
        };
    }
    void serve(const char* version) { serve(fakes::FakeChannel(QString::fromLatin1(version))); }
    void configure(const QByteArray& runtimeUpdates) {
        world.files.addFile(world.configPath(), "{\"runtimeUpdates\":" + runtimeUpdates + "}");
    }

    // What it is like afterwards

    static MacRuntimeCurrentState stateOf(const char* version) {
        MacRuntimeCurrentState state;
        state.currentVersion = QString::fromLatin1(version);
        state.channel = QStringLiteral("beta");
        return state;
    }
    MacRuntimeCurrentState recorded() const {
        return updater.currentState().value_or(stateOf("(no record)"));
    }
    std::string status() const {
        return updater.lastStatus().value_or(QStringLiteral("(none)")).toStdString();
    }
    std::string available() const {
        return updater.availableVersion().value_or(QStringLiteral("(none)")).toStdString();
    }
    std::vector<std::string> requests() const {
        std::vector<std::string> urls;
        for (const QString& url : world.http.urls()) {
            urls.push_back(url.toStdString());
        }
        return urls;
    }
    /// The changes to the file system, with the store's directory left out of the paths.
    std::vector<std::string> changes() const {
        std::vector<std::string> lines;
        for (QString line : world.files.changes) {
            lines.push_back(line.replace(inStore(QString()), QString()).toStdString());
        }
        return lines;
    }

    // Running operations

    template <typename T>
    struct Outcome {
        std::optional<T> value;
        std::exception_ptr error;
    };

    /// Starts an operation and runs the world until nothing is due.
    template <typename T>
    std::shared_ptr<Outcome<T>> begin(Task<T> task) {
        auto outcome = std::make_shared<Outcome<T>>();
        keep(std::move(task), outcome);
        world.queue.runUntilIdle();
        return outcome;
    }

    /// The result of an operation that ends by itself; what it throws is thrown here.
    template <typename T>
    T run(Task<T> task) {
        const auto outcome = begin(std::move(task));
        if (outcome->error) {
            std::rethrow_exception(outcome->error);
        }
        return outcome->value.value();
    }

    template <typename T>
    std::string errorOf(Task<T> task) {
        const auto outcome = begin(std::move(task));
        try {
            if (outcome->error) {
                std::rethrow_exception(outcome->error);
            }
        } catch (const PlatformError& error) {
            return error.domain().toStdString() + " " + std::to_string(error.code()) + ": " +
                   error.description().toStdString();
        }
        return "(none)";
    }

    /// "ok: MESSAGE" or "failed: MESSAGE"; checks that the message is the last status.
    std::string told(const MacRuntimeUpdateResult& result) const {
        EXPECT_EQ(result.message.toStdString(), status());
        return (result.succeeded ? "ok: " : "failed: ") + result.message.toStdString();
    }
    std::string check() { return told(run(updater.checkForUpdates())); }
    std::string update() { return told(run(updater.applyAvailableUpdate())); }
    /// "VERSION at ROOT" of the runtime chosen; "shipped" for the shipped one.
    std::string resolve() {
        const auto chosen = run(updater.resolveLaunchConfiguration());
        if (chosen == updater.shippedLaunchConfiguration()) {
            return "shipped";
        }
        EXPECT_FALSE(chosen.isLegacy);
        const QString root = chosen.localServerRoot.chopped(QStringLiteral("/local-server").size());
        EXPECT_EQ(chosen.localServerRoot, root + QStringLiteral("/local-server"));
        EXPECT_EQ(chosen.nodeBinaryURL, root + QStringLiteral("/node-runtime/node"));
        return chosen.version.value().toStdString() + " at " +
               QString(root).remove(inStore(QString())).toStdString();
    }

    fakes::FakeWorld world;
    MacRuntimeUpdater updater{world.locations.resourceRoot(), world.stateRoot(), world.platform};

private:
    template <typename T>
    static Task<> keep(Task<T> task, std::shared_ptr<Outcome<T>> outcome) {
        try {
            outcome->value.emplace(co_await std::move(task));
        } catch (const PlatformError&) {
            outcome->error = std::current_exception();
        } catch (const TaskAbandoned&) {
            // The test is over.
        }
    }
};

inline const char kNow[] = "2026-11-15T21:37:51Z";

} // namespace orvanta
