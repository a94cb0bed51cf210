// SPDX-License-Identifier: MIT
#pragma once

#include "simulation/world/conditions.h"
#include "simulation/world/moment.h"

#include <QByteArray>

#include <cstdint>
#include <string>
#include <vector>

namespace orvanta::simulation {

enum class EventKind {
    startTray,
    quit,     ///< from the menu; the process stays for `value` ms
    kill,     ///< the process is gone at once
    click,    ///< menu entry `what`
    clickAll, ///< every entry but Quit, at the same moment
    set,      ///< condition `what` becomes `value`
    turn,     ///< the same, for connectors that run too
    crash,    ///< all connectors exit with `value`
    speak,    ///< the newest connector prints; see `Connector::speak`
    move,     ///< the newest connector changes its port
    askHost,  ///< somebody sends request `what` to the tray's listener
    stranger, ///< somebody else's connector on port 3000 comes or, with 0, goes
    setClock, ///< by `value` seconds
    sleep,    ///< the computer sleeps for `value` seconds
    failFile, ///< the change of a file after `value` more fails
    damage,   ///< somebody meddles with the store; see `damage`
    count,
};

struct Event {
    Moment at = 0;
    EventKind kind = EventKind::startTray;
    std::int64_t what = 0;
    std::int64_t value = 0;
};

/// All that happens to the tray in one run. In between the world is dull.
struct Script {
    std::vector<Event> events; ///< by moment
    Moment end = 0;
};

/// The script of a seed; the same seed has the same script for ever.
Script scriptOf(std::uint64_t seed);

/// One line for people.
std::string written(const Event& event);

/// Requests to the listener; whether it has to accept each.
struct HostRequest {
    QByteArray bytes;
    bool isAccepted;
};
extern const std::vector<HostRequest> kHostRequests;

} // namespace orvanta::simulation
