// SPDX-License-Identifier: MIT
#pragma once

#include "connector/desktop_connector_manager.h"
#include "fakes/fake_world.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

namespace orvanta {

/// A manager in a world where, at first, nothing answers and the shipped runtime is complete. The
/// runtime store is switched off, so that the shipped runtime is what runs; `useStore` undoes that.
class ManagerTest : public ::testing::Test {
protected:
    ManagerTest() { world.environment.values.set("ORVANTA_RUNTIME_UPDATES_ENABLED", "0"); }

    /// The operations that still wait are unwound while the manager exists.
    void TearDown() override { world.shutDown(); }

    void useStore() { world.environment.values = EnvironmentVariables(); }

    void startManager() {
        manager->start();
        world.queue.runUntilIdle();
    }

    /// Started, with one child running that has announced `port`.
    void startWithAnnouncedPort(int port) {
        startManager();
        announce(port);
    }

    void announce(int port) {
        world.processes.last().print(
            "Desktop Connector running on http://127.0.0.1:" + QByteArray::number(port) + "\n");
        world.queue.runUntilIdle();
    }

    void advance(double seconds) { world.queue.advance(Seconds(seconds)); }

    /// Runs an operation of the manager to the point where it waits for time or an answer.
    template <typename T>
    std::shared_ptr<std::optional<T>> begin(Task<T> task) {
        auto result = std::make_shared<std::optional<T>>();
        keepResult(std::move(task), result);
        world.queue.runUntilIdle();
        return result;
    }

    /// The same for operations without a result: true once it has ended.
    std::shared_ptr<bool> begin(Task<> task) {
        auto ended = std::make_shared<bool>(false);
        keepEnd(std::move(task), ended);
        world.queue.runUntilIdle();
        return ended;
    }

    /// Every request to the status endpoint is answered with `document`; the health endpoint
    /// answers with 200.
    void answerStatusWith(const QByteArray& document) {
        world.http.respond = [document](const fakes::FakeRequest& request) {
            const bool isStatus = request.url.endsWith(QStringLiteral("/api/ov/status"));
            return HttpReply{200, isStatus ? document : QByteArray("ok")};
        };
    }

    int statusRequests() const { return world.http.count("GET", QStringLiteral("/api/ov/status")); }
    int healthRequests() const { return world.http.count("GET", QStringLiteral("/api/ov/health")); }
    QByteArray portOf(std::size_t child) const {
        return world.processes.children.at(child)->variable("PORT").value_or("(none)");
    }
    QString error() const { return manager->lastError().value_or(QStringLiteral("(none)")); }

    fakes::FakeWorld world;
    std::shared_ptr<DesktopConnectorManager> manager =
        std::make_shared<DesktopConnectorManager>(world.platform);

private:
    template <typename T>
    static Task<> keepResult(Task<T> task, std::shared_ptr<std::optional<T>> result) {
        try {
            result->emplace(co_await std::move(task));
        } catch (const TaskAbandoned&) {
            // The test is over.
        }
    }

    static Task<> keepEnd(Task<> task, std::shared_ptr<bool> ended) {
        try {
            co_await std::move(task);
            *ended = true;
        } catch (const TaskAbandoned&) {
            // The test is over.
        }
    }
};

inline const QByteArray kRunning = R"({"state":"RUNNING"})";

} // namespace orvanta
