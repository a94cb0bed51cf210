// SPDX-License-Identifier: MIT
#include "app/menu_bar_label.h"

#include "unit/app/print_text.h"

#include <gtest/gtest.h>

namespace orvanta {
namespace {

TEST(MenuBarLabel, SaysTheNameAndTheState) {
    EXPECT_EQ(menuBarAccessibilityLabel(ConnectorMenuState::offline),
              QStringLiteral("Orvanta Offline"));
    EXPECT_EQ(menuBarAccessibilityLabel(ConnectorMenuState::notPaired),
              QStringLiteral("Orvanta Not Paired"));
    EXPECT_EQ(menuBarAccessibilityLabel(ConnectorMenuState::online),
              QStringLiteral("Orvanta Online"));
}

} // namespace
} // namespace orvanta
