// SPDX-License-Identifier: MIT
#include "integration/tray/tray_process.h"

#include <csignal>
#include <cstdio>

namespace orvanta::tests {

using TrayEndurance = TrayTest;

/// Each round really kills the connector and waits for the next one; the delay of one second
/// before a restart makes this the longest test of all.
TEST_F(TrayEndurance, ManyRestartsInARowLeakNothing) {
    constexpr int kRounds = ORVANTA_SANITIZED ? 40 : 200;
    constexpr int kWarmUp = 20;
    startAndWaitForConnector();
    std::size_t descriptors = 0;
    std::size_t resident = 0;
    for (int round = 1; round <= kRounds; ++round) {
        const int before = connectorPid();
        ::kill(before, SIGKILL);
        ASSERT_TRUE(waitForNewConnector(before)) << "round " << round;
        ASSERT_EQ(childrenOf(trayPid()), std::vector<pid_t>{connectorPid()}) << "round " << round;
        if (round == kWarmUp) {
            descriptors = descriptorCount(trayPid());
            resident = residentKiB(trayPid());
        }
    }
    ASSERT_TRUE(waitForLine(QStringLiteral("Status: Not Paired")));
    const std::size_t grown = residentKiB(trayPid()) - std::min(resident, residentKiB(trayPid()));
    RecordProperty("growth_kib", static_cast<int>(grown));
    // A poll may be under way at either moment: its socket is no leak.
    EXPECT_LE(descriptorCount(trayPid()), descriptors + 2);
    if (ORVANTA_SANITIZED) {
        std::puts("The size of the memory is not looked at: the sanitizer keeps what is freed.");
    } else {
        EXPECT_LT(grown, 2'048U);
    }
    EXPECT_EQ(starts(), kRounds + 1);
}

} // namespace orvanta::tests
