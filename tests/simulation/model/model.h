// SPDX-License-Identifier: MIT
#pragma once

#include "simulation/model/command_rules.h"
#include "simulation/model/status_rules.h"
#include "simulation/model/store_rules.h"
#include "simulation/model/supervision_rules.h"
#include "simulation/model/update_rules.h"
#include "simulation/model/verdict.h"
#include "simulation/world/witness.h"

#include <memory>
#include <string>

namespace orvanta::simulation {

/// What is required of the tray, said a second time and much more simply. Watches one world and
/// checks after every step.
class Model : public Witness {
public:
    explicit Model(World& world);

    /// The tray's life begins; called just before `World::startTray`.
    void trayStarting();
    void quitting();
    /// Quit has returned.
    void quitHandled();
    /// The process is gone; `isClean` unless something of it stayed behind.
    void trayEnded(bool isClean);
    void clicking(MenuEntryId entry);
    void slept(Moment from, Moment to);
    void damaged() { m_store.damaged(); }
    /// After the world has been dull for a while and Restart was chosen.
    void checkRecovery();

    const std::optional<Violation>& violation() const { return m_verdict.violation(); }
    /// A number for all that was seen so far; equal runs have equal ones.
    std::uint64_t fingerprint() const { return m_fingerprint; }
    /// Prints what is seen.
    bool isTalking = false;

    void launched(const Connector& connector) override;
    void launchRefused(const QString& executable) override;
    void terminated(const Connector& connector) override;
    void exitReported(const Connector& connector, int status) override;
    void exitHandled(const Connector& connector, int status) override;
    void portAnnounced(std::int64_t port) override;
    std::int64_t requestSent(Purpose purpose, std::int64_t number) override;
    void replied(const ReplySeen& reply) override;
    void replyHandled(const ReplySeen& reply) override;
    void hostAsked(const QByteArray& request, const QByteArray& reply) override;
    void note(const std::string& what) override;

private:
    /// One life of the tray.
    struct Life {
        Life(World& world, Verdict& verdict, StoreRules& store)
            : supervision(world, verdict), status(world, verdict, supervision),
              commands(world, verdict, supervision, store),
              updates(world, verdict, supervision, store) {}
        SupervisionRules supervision;
        StatusRules status;
        CommandRules commands;
        UpdateRules updates;
    };

    Moment now() const { return m_world.queue.now(); }
    void check();
    void checkEnvironment(const Connector& connector);
    void talk();
    void mix(std::uint64_t what);

    World& m_world;
    Verdict m_verdict;
    StoreRules m_store;
    std::unique_ptr<Life> m_life;
    std::uint64_t m_fingerprint = 0;
    QString m_said;
    QString m_saidOfStore;
};

} // namespace orvanta::simulation
