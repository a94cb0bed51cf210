// SPDX-License-Identifier: MIT
#include "simulation/script/script.h"

namespace orvanta::simulation {

const std::vector<HostRequest> kHostRequests = {
    {"POST /restart HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n", true},
    {"POST /restart ", true},
    {"", false},
    {"POST /restart\r\n", false},
    {"GET /restart HTTP/1.1\r\n\r\n", false},
    {"POST /restart?x HTTP/1.1\r\n\r\n", false},
    {"POST /restart HTTP/1.1\r\n\r\n\xff\xfe", false},
    {QByteArray("POST /restart ") + QByteArray(40'000, 'x'), true},
};

namespace {

const char* const kEntryNames[] = {
    "",        "status",   "workspace", "last-error", "separator", "Open Dashboard",
    "Sign In", "Sign Out", "Restart",   "separator",  "runtime",   "Check",
    "Update",  "Rollback", "Login",     "separator",  "Quit",
};

std::string number(const char* before, std::int64_t value, const char* after) {
    return before + std::to_string(value) + after;
}

std::string what(const Event& event) {
    const auto condition = static_cast<Condition>(event.what);
    switch (event.kind) {
    case EventKind::startTray:
        return "the tray is started";
    case EventKind::quit:
        return number("Quit; the process ends after ", event.value, " ms");
    case EventKind::kill:
        return "the tray is killed";
    case EventKind::click:
        return std::string("click on ") + kEntryNames[event.what];
    case EventKind::clickAll:
        return "click on everything but Quit";
    case EventKind::set:
        return written(condition, event.value);
    case EventKind::turn:
        return "running connectors too: " + written(condition, event.value);
    case EventKind::crash:
        return number("all connectors exit with ", event.value, "");
    case EventKind::speak:
        return number("the connector prints text ", event.value, "");
    case EventKind::move:
        return "the connector moves to another port";
    case EventKind::askHost:
        return number("request ", event.what, " to the restart listener");
    case EventKind::stranger:
        return event.value != 0 ? "a stranger listens on port 3000" : "the stranger leaves";
    case EventKind::setClock:
        return number("the clock is set by ", event.value, " s");
    case EventKind::sleep:
        return number("the computer sleeps for ", event.value, " s");
    case EventKind::failFile:
        return number("change ", event.value, " of a file from now on fails");
    case EventKind::damage:
        return number("the store is damaged in way ", event.value, "");
    case EventKind::count:
        break;
    }
    return "?";
}

} // namespace

std::string written(const Event& event) {
    return written(event.at) + "  " + what(event);
}

} // namespace orvanta::simulation
