// SPDX-License-Identifier: MIT
#include "simulation/model/model.h"

#include "simulation/script/script.h"
#include "simulation/world/seeded.h"

#include <algorithm>
#include <cstdio>

namespace orvanta::simulation {

Model::Model(World& world) : m_world(world), m_store(world, m_verdict) {
    world.setWitness(*this);
    world.queue.afterStep = [this] { check(); };
    world.files.onRemove = [this](const QString& path) { m_store.removing(path); };
    world.files.onRead = [this](const QString& path) {
        if (m_life && path == m_world.configPath()) {
            m_life->supervision.settingsRead();
            m_life->commands.settingsRead();
            m_life->updates.settingsRead();
        }
    };
}

void Model::mix(std::uint64_t what) {
    m_fingerprint = mixed(m_fingerprint ^ what, static_cast<std::uint64_t>(now()));
}

void Model::note(const std::string& what) {
    if (isTalking) {
        std::printf("  %s    %s\n", written(now()).c_str(), what.c_str());
    }
}

void Model::trayStarting() {
    m_life = std::make_unique<Life>(m_world, m_verdict, m_store);
    m_store.follow(&m_life->supervision);
}

void Model::trayEnded(bool isClean) {
    m_store.follow(nullptr);
    m_life.reset();
    if (!isClean) {
        m_verdict.fail(now(), "something keeps the manager alive after the end");
    }
}

void Model::quitting() {
    m_life->supervision.quitting();
}

void Model::quitHandled() {
    if (m_life->supervision.held() != 0) {
        m_verdict.fail(now(), "the connector is not told of the end of the tray");
    }
}

void Model::clicking(MenuEntryId entry) {
    m_life->commands.clicked(entry);
    m_life->updates.clicked(entry);
}

void Model::slept(Moment from, Moment to) {
    if (m_life) {
        m_life->supervision.slept(from, to);
        m_life->status.slept(to - from);
        m_life->commands.slept(to - from);
        m_life->updates.slept(to - from);
    }
}

void Model::check() {
    if (!m_life || !m_world.hasTray()) {
        return;
    }
    m_life->supervision.check();
    m_life->status.check();
    m_store.check();
    m_life->commands.check();
    m_life->updates.check();
    if (isTalking) {
        talk();
    }
}

void Model::launched(const Connector& connector) {
    const auto port = connector.requestedPort();
    mix(static_cast<std::uint64_t>(port) + 1);
    note("launched " + std::to_string(connector.number()) + " on port " + std::to_string(port) +
         ": " + connector.options().workingDirectory.toStdString());
    if (!m_life) {
        m_verdict.fail(now(), "a connector is launched after the end of the tray");
        return;
    }
    m_life->supervision.launched(connector);
    m_life->status.launched();
    m_life->commands.launched();
    m_store.launched(connector);
    m_store.check();
    m_life->updates.launched();
    const bool isPending = m_store.record() && m_store.record()->isPending;
    if (isPending && !m_world.manager()->runtimeUpdateInProgress()) {
        m_life->supervision.watchBegan(m_store.record()->current);
    }
    checkEnvironment(connector);
}

void Model::checkEnvironment(const Connector& connector) {
    const auto& variables = connector.options().environment;
    const QString root = connector.options().workingDirectory;
    const QByteArray host = QByteArray("http://127.0.0.1:") +
                            QByteArray::number(m_world.hosts.nextPort.value_or(0)) + "/restart";
    const bool isRight =
        variables.value("HOST") == "127.0.0.1" &&
        variables.value("ORVANTA_RUNTIME_ROOT") == root.toUtf8() &&
        variables.value("ORVANTA_STATE_ROOT") == m_world.stateRoot().toUtf8() &&
        (m_world.hosts.listeners.empty() || variables.value("ORVANTA_HOST_CONTROL_URL") == host) &&
        connector.options().arguments == QStringList{root + QStringLiteral("/server.js")};
    if (!isRight) {
        m_verdict.fail(now(), "a connector is launched in a wrong environment");
    }
}

void Model::launchRefused(const QString& executable) {
    note("a launch is refused");
    if (m_life) {
        m_life->supervision.launchRefused(executable);
    }
}

void Model::terminated(const Connector& connector) {
    mix(static_cast<std::uint64_t>(connector.number()) << 20U);
    note("SIGTERM for " + std::to_string(connector.number()));
    if (m_life) {
        m_life->supervision.terminated(connector);
    }
}

void Model::exitReported(const Connector& connector, int status) {
    mix(static_cast<std::uint64_t>(status) << 30U);
    note("exit of " + std::to_string(connector.number()) + " with " + std::to_string(status));
    m_world.output.lines.clear();
    m_life->supervision.exitReported(connector);
}

void Model::exitHandled(const Connector& connector, int status) {
    const QString exitLine = QStringLiteral("Orvanta server exited with status %1").arg(status);
    const QString retryLine = QStringLiteral("Orvanta server failed after requesting port %1; "
                                             "retrying with an OS-assigned port")
                                  .arg(connector.requestedPort());
    const QStringList& lines = m_world.output.lines;
    if (lines != QStringList{m_life->supervision.isRetryDue() ? retryLine : exitLine}) {
        m_verdict.fail(now(), "an exit is not reported in its line",
                       lines.join(QLatin1Char('|')).toStdString());
    }
}

void Model::portAnnounced(std::int64_t port) {
    note("announced port " + std::to_string(port));
    m_life->status.portAnnounced(port);
    m_life->supervision.portAnnounced(port);
}

std::int64_t Model::requestSent(Purpose purpose, std::int64_t number) {
    if (!m_life) {
        m_verdict.fail(now(), "a request is sent after the end of the tray");
        return 0;
    }
    m_life->supervision.requestSent(purpose, number);
    m_life->status.requestSent(purpose);
    m_life->commands.requestSent(purpose);
    m_life->updates.requestSent(purpose);
    return m_life->supervision.choice();
}

void Model::replied(const ReplySeen& reply) {
    mix(static_cast<std::uint64_t>(reply.status) << 3U | static_cast<std::uint64_t>(reply.purpose));
    m_life->supervision.replied(reply);
    m_life->status.replied(reply);
    m_life->updates.replied(reply);
    if (reply.purpose == Purpose::status && reply.meaning) {
        m_store.answered(reply.ticket);
    }
}

void Model::replyHandled(const ReplySeen& reply) {
    m_life->status.replyHandled(reply);
    m_life->commands.replyHandled(reply);
}

void Model::hostAsked(const QByteArray& request, const QByteArray& reply) {
    const auto known =
        std::find_if(kHostRequests.begin(), kHostRequests.end(),
                     [&request](const HostRequest& each) { return each.bytes == request; });
    const bool isAccepted = known->isAccepted;
    const QByteArray expected =
        isAccepted ? "HTTP/1.1 202 Accepted\r\nContent-Type: application/json\r\n"
                     "Content-Length: 17\r\nConnection: close\r\n\r\n{\"accepted\":true}"
                   : "HTTP/1.1 404 Not Found\r\nContent-Type: application/json\r\n"
                     "Content-Length: 18\r\nConnection: close\r\n\r\n{\"accepted\":false}";
    note(std::string("the host is asked for a restart and ") +
         (isAccepted ? "accepts" : "refuses"));
    if (reply != expected) {
        m_verdict.fail(now(), "a request to the host is answered wrongly", reply.toStdString());
    }
    if (isAccepted && m_life) {
        m_life->supervision.restartAskedFor();
    }
}

void Model::talk() {
    const DesktopConnectorManager& manager = *m_world.manager();
    const QString now = QStringLiteral("%1 | %2 | %3")
                            .arg(manager.statusText(), manager.runtimeUpdateStatusText(),
                                 manager.lastError().value_or(QStringLiteral("-")));
    if (now != m_said) {
        m_said = now;
        note(now.toStdString());
    }
    const auto& record = m_store.record();
    const QString store =
        record ? QStringLiteral("record: %1 after %2, healthy %3%4")
                     .arg(record->current, record->previous.value_or(QStringLiteral("-")),
                          record->lastHealthy.value_or(QStringLiteral("-")),
                          record->isPending ? QStringLiteral(", pending") : QString())
               : QStringLiteral("no record");
    if (store != m_saidOfStore) {
        m_saidOfStore = store;
        note(store.toStdString());
    }
}

void Model::checkRecovery() {
    if (!m_life || !m_life->supervision.isSupervising() || m_life->supervision.isQuitting()) {
        return;
    }
    const DesktopConnectorManager& manager = *m_world.manager();
    if (manager.menuState() != ConnectorMenuState::online) {
        m_verdict.fail(now(), "the tray does not recover when the world does",
                       manager.statusText().toStdString() + " / " +
                           manager.lastError().value_or(QStringLiteral("-")).toStdString());
    } else {
        m_store.checkPruned();
    }
}

} // namespace orvanta::simulation
