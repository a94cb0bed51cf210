// SPDX-License-Identifier: MIT
#include "desktop/bus_monitor.h"
#include "desktop/desktop_test.h"
#include "desktop/from_environment.h"

namespace orvanta::tests {

using TrayOnAQuietDesktop = DesktopTest;

/// ORVANTA_DESKTOP_IDLE_SECONDS says for how long nothing may be said.
TEST_F(TrayOnAQuietDesktop, SaysNothingForAsLongAsNothingChanges) {
    const std::chrono::seconds span(fromEnvironment("ORVANTA_DESKTOP_IDLE_SECONDS", 10));
    startAndSettle();
    BusMonitor monitor(session.busAddress());
    ASSERT_TRUE(monitor.catchUp());
    // The icon's connection is one of several.
    ASSERT_GT(monitor.namesOf(trayPid()).size(), 1);
    ASSERT_TRUE(monitor.namesOf(trayPid()).contains(item->uniqueName()));
    const auto isQuiet = [&] {
        monitor.forget();
        holdsFor([] { return true; }, std::chrono::seconds(1));
        return monitor.catchUp() && monitor.fromProcess(trayPid()).isEmpty();
    };
    // What the panel asks about a new icon is answered first.
    ASSERT_TRUE(waitFor(isQuiet));
    monitor.forget();
    const int polls = requests(QStringLiteral("GET /api/ov/status"));
    holdsFor([] { return true; }, span);
    ASSERT_TRUE(monitor.catchUp());
    const int polled = requests(QStringLiteral("GET /api/ov/status")) - polls;
    EXPECT_GT(polled, 2 * span.count());
    QStringList said;
    for (const BusMonitor::Message& message : monitor.fromProcess(trayPid())) {
        said.append(message.sender + u' ' + message.type + u' ' + message.member);
    }
    EXPECT_EQ(said, QStringList());
    RecordProperty("seconds", static_cast<int>(span.count()));
    RecordProperty("polls", polled);
    RecordProperty("messages", static_cast<int>(said.size()));
}

} // namespace orvanta::tests
