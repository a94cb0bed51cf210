// SPDX-License-Identifier: MIT
#include "soak/restarts.h"

#include "soak/failure.h"

#include <csignal>

namespace orvanta::soak {
namespace {

constexpr int kOneCrashIn = 12;

} // namespace

void Restarts::next() {
    if (m_random() % kOneCrashIn == 0) {
        // Of one that came on any port, so that a second passes before the next.
        m_tray.settle();
        kill();
        ++m_crashed;
        return;
    }
    const pid_t before = m_tray.connector().pid();
    const auto reply = tests::request("POST", m_tray.connector().restartUrl());
    require(reply && reply->status == 202, QStringLiteral("no restart was accepted"));
    const pid_t asked = m_tray.awaitNewChild(before);
    ++m_asked;
    // Not waiting for its program to begin: the port that was asked for has failed.
    ::kill(asked, SIGKILL);
    m_tray.awaitNewConnector(asked);
    ++m_retried;
}

void Restarts::kill() {
    const pid_t before = m_tray.connector().pid();
    ::kill(before, SIGKILL);
    m_tray.awaitNewConnector(before);
}

} // namespace orvanta::soak
