// SPDX-License-Identifier: MIT
#include "simulation/world/world.h"

#include "simulation/world/seeded.h"

namespace orvanta::simulation {

QDateTime WorldClock::now() const {
    constexpr std::int64_t kBeginning = 1'794'780'000; // in November 2026
    return QDateTime::fromSecsSinceEpoch(kBeginning + m_queue.now() / kSecond + offsetSeconds,
                                         Qt::UTC);
}

World::World() {
    files.beforeChange = [this] { work.holdUp(); };
    queue.lateness = [this](Moment due) {
        const Moment lag = conditions[Condition::timerLag] * kMillisecond;
        return lag == 0 ? 0 : static_cast<Moment>(mixed(17, due) % static_cast<std::uint64_t>(lag));
    };
    files.createDirectory(locations.applicationSupport());
    ship(0);
}

World::~World() {
    endTray();
}

void World::setWitness(Witness& witness) {
    connectors.witness = &witness;
    network.witness = &witness;
}

void World::ship(std::int64_t version) {
    const QString root = locations.resourceRoot();
    const QString name = version < 0
                             ? QStringLiteral("bootstrap")
                             : QString::fromLatin1(kVersions.at(static_cast<std::size_t>(version)));
    files.putTree(root, runtimeTree(name));
    if (version >= 0) {
        MacRuntimeMetadata metadata;
        metadata.version = name;
        files.put(root + QStringLiteral("/local-server/runtime.json"), metadata.encode());
    }
}

void World::startTray() {
    ship(conditions[Condition::shipped]);
    environment.values = EnvironmentVariables();
    if (conditions[Condition::storeOff] != 0) {
        environment.values.set("ORVANTA_RUNTIME_UPDATES_ENABLED", "FALSE");
    }
    hosts.nextPort = ++m_lastHostPort;
    hosts.refusal = conditions[Condition::listenerRefused] != 0
                        ? std::optional(QStringLiteral("Too many open files"))
                        : std::nullopt;
    m_manager = std::make_shared<DesktopConnectorManager>(platform);
    m_view = std::make_unique<OrvantaMenuBarView>(m_manager, queue, application);
    queue.post([manager = m_manager] { manager->start(); });
}

void World::quitTray() {
    m_view->activate(MenuEntryId::quit);
}

bool World::endTray() {
    connectors.orphanAll();
    // Until nothing waits any more: what is unwound may have had something else wait.
    for (int round = 0; round < 3; ++round) {
        queue.dropTray();
        work.dropTray();
    }
    m_view.reset();
    const std::weak_ptr<DesktopConnectorManager> weak = m_manager;
    m_manager.reset();
    hosts.listeners.clear();
    hosts.labels.clear();
    application.observers.clear();
    output.lines.clear();
    browser.opened.clear();
    loginItem.calls.clear();
    return weak.expired();
}

void World::set(Condition condition, std::int64_t value) {
    conditions.set(condition, value);
    if (condition == Condition::config) {
        files.put(configPath(), kConfigs.at(static_cast<std::size_t>(value)).bytes);
    } else if (condition == Condition::loginRefused) {
        loginItem.failure = value != 0 ? std::optional(QStringLiteral("Not now")) : std::nullopt;
    }
}

void World::turn(Condition condition, std::int64_t value) {
    conditions.set(condition, value);
    for (const auto& connector : connectors.living()) {
        connector->turn(condition, value);
    }
}

} // namespace orvanta::simulation
