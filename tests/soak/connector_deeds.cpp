// SPDX-License-Identifier: MIT
// What a connector does, and what is done to it.
#include "soak/deeds.h"
#include "soak/failure.h"

#include <csignal>

namespace orvanta::soak {

void Deeds::connectorIsKilled() {
    const int signals[]{SIGKILL, SIGSEGV, SIGTERM, SIGABRT};
    const pid_t before = m_tray.connector().pid();
    ::kill(before, signals[pick(4)]);
    m_tray.awaitNewConnector(before);
}

void Deeds::connectorExits() {
    const int codes[]{0, 1, 3, 42, 255};
    const pid_t before = m_tray.connector().pid();
    post(QStringLiteral("/demo/crash?code=%1").arg(codes[pick(5)]));
    m_tray.awaitNewConnector(before);
}

void Deeds::connectorAsksForRestart() {
    const pid_t before = m_tray.connector().pid();
    post(QStringLiteral("/demo/restart"));
    m_tray.awaitNewConnector(before);
}

void Deeds::userRestarts() {
    const pid_t before = m_tray.connector().pid();
    m_tray.user.choose(QStringLiteral("Restart"));
    m_tray.awaitNewConnector(before);
}

void Deeds::userRestartsThoughRefused() {
    post(QStringLiteral("/demo/refuse-restart?on=1"));
    userRestarts();
}

void Deeds::connectorHangs() {
    post(QStringLiteral("/demo/hang?what=status,health"));
    awaitStatus(QStringLiteral("Offline"));
    if (pick(2) == 0) {
        connectorIsKilled();
    } else {
        post(QStringLiteral("/demo/hang?what=status,health&on=0"));
    }
}

void Deeds::connectorFallsMute() {
    post(QStringLiteral("/demo/silent?how=mute&ms=3000"));
    awaitStatus(QStringLiteral("Offline"));
}

void Deeds::connectorChangesItsPort() {
    post(QStringLiteral("/demo/silent?ms=1000"));
    awaitStatus(QStringLiteral("Offline"));
}

void Deeds::connectorClosesItsOutput() {
    post(QStringLiteral("/demo/close-output"));
    m_tray.pauseFor(300);
    connectorIsKilled();
}

void Deeds::connectorFloods() {
    const QByteArray piece(16'384, 'x');
    const QString stream = pick(2) == 0 ? QStringLiteral("stdout") : QStringLiteral("stderr");
    post(QStringLiteral("/demo/print?stream=%1&repeat=256").arg(stream),
         pick(2) == 0 ? piece : piece + '\n');
}

void Deeds::connectorLies() {
    const QByteArray lies[]{"{",
                            "[]",
                            "null",
                            R"({"state":1})",
                            R"({"localServer":{"port":"x"}})",
                            QByteArray(100'000, '{'),
                            R"({"state":"STARTING","webAppUrl":"http://"})"};
    post(QStringLiteral("/demo/status-document"), lies[pick(7)]);
    m_tray.pauseFor(600);
    post(QStringLiteral("/demo/status-document"));
}

void Deeds::connectorGoesOnline() {
    post(QStringLiteral("/demo/state?value=RUNNING"));
    awaitStatus(QStringLiteral("Online"));
    post(QStringLiteral("/demo/state"));
}

void Deeds::userPairsAndSignsOut() {
    m_tray.user.choose(QStringLiteral("Sign In / Pair"));
    awaitStatus(QStringLiteral("Online"));
    m_tray.user.choose(QStringLiteral("Sign Out"));
    awaitStatus(QStringLiteral("Not Paired"));
}

void Deeds::strangerCallsHostControl() {
    QString wrong = m_tray.connector().restartUrl();
    wrong.chop(1);
    for (int call = 0; call < 10; ++call) {
        const auto reply = tests::request(pick(2) == 0 ? "GET" : "POST", wrong);
        require(reply && reply->status == 404, QStringLiteral("no 404 for ") + wrong);
    }
}

void Deeds::menuIsDisturbed() {
    m_tray.user.disturb();
}

} // namespace orvanta::soak
