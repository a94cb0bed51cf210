// SPDX-License-Identifier: MIT
#pragma once

#include "soak/soaked_tray.h"

#include <map>
#include <random>
#include <vector>

namespace orvanta::soak {

/// What happens to a tray in years of use, one thing after the other, chosen at random. Each ends
/// with the tray settled, or in a Failure.
class Deeds {
public:
    Deeds(SoakedTray& tray, std::mt19937_64& random);

    /// Does one of those after which the tray keeps more for good: what an installation needs is
    /// loaded for the first.
    void begin();
    /// Does one.
    void next();
    /// How often each has been done.
    const std::map<QString, int>& counts() const { return m_counts; }

private:
    struct Deed {
        const char* name;
        int weight;
        void (Deeds::*run)();
    };
    static const std::vector<Deed> kAll;

    void connectorIsKilled();
    void connectorExits();
    void connectorAsksForRestart();
    void userRestarts();
    void userRestartsThoughRefused();
    void connectorHangs();
    void connectorFallsMute();
    void connectorChangesItsPort();
    void connectorClosesItsOutput();
    void connectorFloods();
    void connectorLies();
    void connectorGoesOnline();
    void userPairsAndSignsOut();
    void strangerCallsHostControl();
    void menuIsDisturbed();
    void userChecks();
    void channelIsAway();
    void archiveIsCut();
    void userUpdates();
    void updateNeverComesUp();
    void userRollsBack();
    void strayVersionIsPruned();

    int pick(int below);
    void post(const QString& path, const QByteArray& body = {});
    void awaitStatus(const QString& status);
    /// Types a command of the runtime and waits until the runtime line begins with one of the
    /// outcomes and the next command can be given.
    void command(const QString& text, const QStringList& outcomes);
    void offer(const QString& version, const QByteArray& archive);
    void rollBack();

    SoakedTray& m_tray;
    std::mt19937_64& m_random;
    std::map<QString, int> m_counts;
    QByteArray m_goodArchive;
    QByteArray m_badArchive;
    int m_lastVersion = 0;
};

} // namespace orvanta::soak
