// SPDX-License-Identifier: MIT
#pragma once

#include "app/orvanta_menu_bar_view.h"
#include "connector/desktop_connector_manager.h"
#include "fakes/fake_desktop.h"
#include "fakes/fake_runtime_services.h"
#include "fakes/fake_serial_queues.h"
#include "platform/platform.h"
#include "simulation/world/channel.h"
#include "simulation/world/connectors.h"
#include "simulation/world/network.h"
#include "simulation/world/world_files.h"
#include "simulation/world/world_queue.h"
#include "simulation/world/world_work.h"

#include <memory>

namespace orvanta::simulation {

/// The time of day, which can be set.
class WorldClock : public WallClock {
public:
    explicit WorldClock(const WorldQueue& queue) : m_queue(queue) {}
    QDateTime now() const override;
    std::int64_t offsetSeconds = 0;

private:
    const WorldQueue& m_queue;
};

/// One computer with one user: everything the tray meets, and the tray itself while it runs.
class World {
public:
    World();
    ~World();
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    /// Who sees everything; to be called once, before anything else.
    void setWitness(Witness& witness);

    void startTray();
    /// Quit, from the menu.
    void quitTray();
    /// The process is gone. False when something of it stayed behind.
    bool endTray();
    bool hasTray() const { return m_manager != nullptr; }
    DesktopConnectorManager* manager() const { return m_manager.get(); }
    OrvantaMenuBarView* view() const { return m_view.get(); }

    /// A condition changes; those of the disk's contents at once.
    void set(Condition condition, std::int64_t value);
    /// The same for the connectors that run.
    void turn(Condition condition, std::int64_t value);

    QString stateRoot() const {
        return locations.applicationSupport() + QStringLiteral("/Orvanta");
    }
    QString configPath() const { return stateRoot() + QStringLiteral("/config.json"); }
    QString recordPath() const { return stateRoot() + QStringLiteral("/runtime/current.json"); }
    QString versionsPath() const { return stateRoot() + QStringLiteral("/runtime/versions"); }

    Conditions conditions;
    WorldQueue queue;
    fakes::FakeSerialQueues hosts;
    Connectors connectors{queue, conditions, hosts};
    Network network{queue, conditions, connectors};
    WorldFiles files{conditions};
    WorldWork work{queue, conditions};
    WorldArchiveTool archiveTool{files};
    WorldClock clock{queue};
    fakes::FakeLocations locations;
    fakes::FakeEnvironment environment;
    fakes::FakeLoginItem loginItem;
    fakes::FakeBrowser browser;
    fakes::FakeApplicationHost application;
    fakes::FakeStandardOutput output;
    fakes::FakeIdentifiers identifiers;
    fakes::FakeContentDigest digest;
    Platform platform{queue,       connectors,  network,     hosts,   files,       locations,
                      environment, clock,       loginItem,   browser, application, output,
                      work,        archiveTool, identifiers, digest};

private:
    void ship(std::int64_t version);

    std::shared_ptr<DesktopConnectorManager> m_manager;
    std::unique_ptr<OrvantaMenuBarView> m_view;
    std::uint16_t m_lastHostPort = 20'000;
};

} // namespace orvanta::simulation
