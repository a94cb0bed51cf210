// SPDX-License-Identifier: MIT
#pragma once

#include "fakes/fake_channel.h"
#include "unit/connector/manager_fixture.h"

#include <string>
#include <vector>

namespace orvanta {

/// A manager whose store holds 1.3.2 and before it 1.3.1. The channel offers 1.4.0. The connector
/// answers status requests as the test says; nothing but the test asks for them: the poll is too
/// slow to matter.
class ManagerStoreTest : public ManagerTest {
protected:
    ManagerStoreTest() {
        useStore();
        configure(R"({"checkOnStartup":false})");
        addVersion("1.3.1");
        addVersion("1.3.2");
        record("1.3.2", "1.3.1", false);
        world.archives.contents.addRuntime(QString());
        world.http.respond = [this](const fakes::FakeRequest& request) { return reply(request); };
    }

    void configure(const QByteArray& runtimeUpdates) {
        world.files.addFile(world.configPath(),
                            R"({"tray":{"statusPollIntervalSeconds":1000000},"runtimeUpdates":)" +
                                runtimeUpdates + "}");
    }
    QString versionDirectory(const char* version) const {
        return world.stateRoot() + QStringLiteral("/runtime/versions/") + QLatin1String(version);
    }
    QString currentJson() const {
        return world.stateRoot() + QStringLiteral("/runtime/current.json");
    }
    void addVersion(const char* version) { world.files.addRuntime(versionDirectory(version)); }
    void record(const char* current, const std::optional<const char*>& previous, bool isPending) {
        MacRuntimeCurrentState state;
        state.currentVersion = QString::fromLatin1(current);
        state.channel = QStringLiteral("beta");
        if (previous) {
            state.previousVersion = QString::fromLatin1(*previous);
        }
        state.pendingHealthCheck = isPending;
        world.files.addFile(currentJson(), state.encode());
    }
    MacRuntimeCurrentState recorded() const {
        return MacRuntimeCurrentState::decode(world.files.bytesOf(currentJson()));
    }
    /// "CURRENT PREVIOUS LASTHEALTHY", with "-" for none, and "pending" at the end.
    std::string store() const {
        const auto state = recorded();
        const QString none = QStringLiteral("-");
        const QString text = QStringLiteral("%1 %2 %3")
                                 .arg(state.currentVersion, state.previousVersion.value_or(none),
                                      state.lastHealthyVersion.value_or(none));
        return text.toStdString() + (state.pendingHealthCheck.value_or(false) ? " pending" : "");
    }
    /// The version of every child launched, in order.
    std::vector<std::string> launched() const {
        std::vector<std::string> versions;
        for (const auto& child : world.processes.children) {
            const QStringList path = child->options.workingDirectory.split(QLatin1Char('/'));
            versions.push_back(path.at(path.size() - 2).toStdString());
        }
        return versions;
    }
    std::string line() const { return manager->runtimeUpdateStatusText().toStdString(); }
    /// Every text the runtime line has had from now on.
    void watchLines() {
        manager->willChange().observe([this] {
            if (lines.empty() || lines.back() != line()) {
                lines.push_back(line());
            }
        });
    }
    int manifestRequests() const {
        int count = 0;
        for (const auto& request : world.http.requests) {
            count += request.url.endsWith(QStringLiteral("/manifest.json")) ? 1 : 0;
        }
        return count;
    }
    /// Started, the child has announced `port`; nothing answers yet. The check at the start failed.
    void startStore(int port = 8123) {
        channel.manifestStatus = 404;
        startWithAnnouncedPort(port);
        channel.manifestStatus = 200;
        world.http.requests.clear();
    }
    /// The child exits as asked to; the restart that follows is half a second away.
    void endChild() { world.processes.last().exit(15); }
    /// Of the status requests from now on `failures` fail, the rest succeeds.
    void answerAfter(int failures) {
        m_failuresLeft = failures;
        isUp = true;
    }

    fakes::FakeChannel channel{QStringLiteral("1.4.0")};
    bool isUp = false;
    std::vector<std::string> lines;

private:
    std::optional<HttpReply> reply(const fakes::FakeRequest& request) {
        if (request.isShared) {
            return channel.reply(request);
        }
        const bool isStatus = request.url.endsWith(QStringLiteral("/api/ov/status"));
        if (!isUp || !isStatus) {
            return HttpReply{};
        }
        return m_failuresLeft-- > 0 ? HttpReply{} : HttpReply{200, kRunning};
    }

    int m_failuresLeft = 0;
};

} // namespace orvanta
