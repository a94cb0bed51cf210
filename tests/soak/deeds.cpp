// SPDX-License-Identifier: MIT
#include "soak/deeds.h"

#include "soak/failure.h"

#include <numeric>

namespace orvanta::soak {
namespace {

constexpr int kPostLimitMs = 20'000; ///< a flood is answered when it has been taken

} // namespace

const std::vector<Deeds::Deed> Deeds::kAll{
    {"connector killed", 20, &Deeds::connectorIsKilled},
    {"connector exits by itself", 15, &Deeds::connectorExits},
    {"connector asks for a restart", 15, &Deeds::connectorAsksForRestart},
    {"user restarts", 8, &Deeds::userRestarts},
    {"user restarts though refused", 3, &Deeds::userRestartsThoughRefused},
    {"connector hangs", 4, &Deeds::connectorHangs},
    {"connector falls mute", 3, &Deeds::connectorFallsMute},
    {"connector closes and opens its port", 3, &Deeds::connectorChangesItsPort},
    {"connector closes its output", 2, &Deeds::connectorClosesItsOutput},
    {"connector floods", 5, &Deeds::connectorFloods},
    {"connector lies", 4, &Deeds::connectorLies},
    {"connector goes online", 4, &Deeds::connectorGoesOnline},
    {"user pairs and signs out", 4, &Deeds::userPairsAndSignsOut},
    {"stranger calls host control", 3, &Deeds::strangerCallsHostControl},
    {"menu disturbed", 3, &Deeds::menuIsDisturbed},
    {"user checks for updates", 4, &Deeds::userChecks},
    {"channel away", 3, &Deeds::channelIsAway},
    {"archive cut", 2, &Deeds::archiveIsCut},
    {"user updates", 6, &Deeds::userUpdates},
    {"update never comes up", 1, &Deeds::updateNeverComesUp},
    {"user rolls back", 4, &Deeds::userRollsBack},
    {"stray version pruned", 3, &Deeds::strayVersionIsPruned},
};

Deeds::Deeds(SoakedTray& tray, std::mt19937_64& random) : m_tray(tray), m_random(random) {
    const QString good = tray.channel.makeRuntime(QStringLiteral("good"), QStringLiteral("1.0.0"));
    const QString bad = tray.channel.makeRuntime(QStringLiteral("bad"), QStringLiteral("1.0.0"),
                                                 {QStringLiteral("--never-healthy")});
    m_goodArchive = tray.channel.archiveOf(good);
    m_badArchive = tray.channel.archiveOf(bad);
    require(!m_goodArchive.isEmpty() && !m_badArchive.isEmpty(), QStringLiteral("no archives"));
}

void Deeds::next() {
    const int total = std::accumulate(kAll.begin(), kAll.end(), 0,
                                      [](int sum, const Deed& deed) { return sum + deed.weight; });
    int chosen = pick(total);
    auto deed = kAll.begin();
    while (chosen >= deed->weight) {
        chosen -= deed->weight;
        ++deed;
    }
    const auto name = QString::fromLatin1(deed->name);
    try {
        (this->*deed->run)();
        m_tray.settle();
    } catch (const Failure& failure) {
        throw Failure(name + QStringLiteral(": ") + QString::fromUtf8(failure.what()));
    }
    ++m_counts[name];
}

void Deeds::begin() {
    userUpdates();
    m_tray.settle();
}

int Deeds::pick(int below) {
    return static_cast<int>(m_random() % static_cast<unsigned>(below));
}

void Deeds::post(const QString& path, const QByteArray& body) {
    require(m_tray.client().post(path, body, kPostLimitMs), QStringLiteral("no answer to ") + path);
}

void Deeds::awaitStatus(const QString& status) {
    require(
        m_tray.waitUntil([&] { return m_tray.user.said(QStringLiteral("Status: ")) == status; }),
        QStringLiteral("the status never was ") + status);
}

} // namespace orvanta::soak
