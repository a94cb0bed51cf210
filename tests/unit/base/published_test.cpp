// SPDX-License-Identifier: MIT
#include "base/published.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace orvanta {

TEST(PublishedTest, ObserversSeeTheOldValue) {
    WillChange willChange;
    Published<int> value(willChange, 1);
    std::vector<int> seen;
    willChange.observe([&] { seen.push_back(*value); });
    value.set(2);
    EXPECT_EQ(seen, std::vector{1});
    EXPECT_EQ(*value, 2);
}

TEST(PublishedTest, SettingTheSameValueTellsNobody) {
    WillChange willChange;
    Published<std::string> value(willChange, "a");
    int count = 0;
    willChange.observe([&] { ++count; });
    value.set("a");
    EXPECT_EQ(count, 0);
    value.set("b");
    EXPECT_EQ(count, 1);
}

TEST(PublishedTest, WhoWantsToKnowIsToldWhenTheValuesHaveSettled) {
    WillChange willChange;
    Published<int> value(willChange, 1);
    std::vector<int> seen;
    willChange.observe([] {});
    willChange.observe([] {}, [&] { seen.push_back(*value); });
    value.set(2);
    value.set(3);
    EXPECT_EQ(seen, std::vector<int>());
    willChange.settle();
    EXPECT_EQ(seen, std::vector{3});
}

TEST(PublishedTest, EveryObserverIsToldOfEveryProperty) {
    WillChange willChange;
    Published<int> first(willChange, 1);
    Published<int> second(willChange, 1);
    int one = 0;
    int other = 0;
    willChange.observe([&] { ++one; });
    willChange.observe([&] { ++other; });
    first.set(2);
    second.set(2);
    EXPECT_EQ(one, 2);
    EXPECT_EQ(other, 2);
}

} // namespace orvanta
