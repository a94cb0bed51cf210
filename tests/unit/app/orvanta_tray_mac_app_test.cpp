// SPDX-License-Identifier: MIT
#include "app/orvanta_tray_mac_app.h"

#include "fakes/fake_world.h"

#include <gtest/gtest.h>

namespace orvanta {
namespace {

TEST(TrayApplication, StartsItsManagerOnceTheLoopRuns) {
    fakes::FakeWorld world;
    const OrvantaTrayMacApp application(world.platform);
    EXPECT_EQ(world.application.accessoryCount, 0);
    world.queue.runUntilIdle();
    EXPECT_EQ(world.application.accessoryCount, 1);
}

} // namespace
} // namespace orvanta
