// SPDX-License-Identifier: MIT
#include "soak/verdict.h"

#include <gtest/gtest.h>

namespace orvanta::soak {
namespace {

constexpr double kInterval = 10;

/// A run of so many samples in which every figure stays what it is.
std::vector<Sample> flatRun(int count) {
    std::vector<Sample> samples;
    for (int number = 0; number < count; ++number) {
        samples.push_back({.seconds = number * kInterval,
                           .deeds = number,
                           .resident = 30'000,
                           .proportional = 12'000,
                           .anonymous = 4'000,
                           .descriptors = 19,
                           .threads = 3,
                           .children = 1,
                           .files = 40});
    }
    return samples;
}

/// Lets a figure grow by so much per hour.
std::vector<Sample> grown(std::vector<Sample> samples, long Sample::*field, double perHour) {
    for (Sample& sample : samples) {
        sample.*field += static_cast<long>(sample.seconds * perHour / 3600);
    }
    return samples;
}

constexpr int kTwoHours = 721;

TEST(Verdict, OfARunInWhichNothingGrowsIsNoComplaint) {
    EXPECT_EQ(complaintsAbout(flatRun(kTwoHours), true), QStringList());
}

TEST(Verdict, LeavesOutTheFirstQuarterOfAShortRunAndTheFirstQuarterHourOfALongOne) {
    EXPECT_DOUBLE_EQ(warmUpSeconds(60), 15);
    EXPECT_DOUBLE_EQ(warmUpSeconds(3600), 900);
    EXPECT_DOUBLE_EQ(warmUpSeconds(7200), 900);
}

TEST(Verdict, SaysNothingOfWhatGrowsDuringTheWarmUp) {
    auto samples = flatRun(kTwoHours);
    for (Sample& sample : samples) {
        if (sample.seconds < 900) {
            sample.resident -= 20'000;
            sample.descriptors -= 10;
        }
    }
    EXPECT_EQ(complaintsAbout(samples, true), QStringList());
}

TEST(Verdict, ComplainsAboutOneDescriptorMore) {
    auto samples = flatRun(kTwoHours);
    for (std::size_t number = 300; number < samples.size(); ++number) {
        samples[number].descriptors = 20;
    }
    EXPECT_EQ(complaintsAbout(samples, true),
              QStringList(QStringLiteral("descriptors went from 19 to 20 (medians of the first and "
                                         "the last quarter)")));
}

TEST(Verdict, ComplainsAboutThreadsAndChildrenToo) {
    auto samples = flatRun(kTwoHours);
    for (std::size_t number = 300; number < samples.size(); ++number) {
        samples[number].threads = 4;
        samples[number].children = 2;
    }
    EXPECT_EQ(complaintsAbout(samples, true).size(), 2);
}

TEST(Verdict, ComplainsAboutFewerToo) {
    auto samples = flatRun(kTwoHours);
    samples.back().threads = 2;
    EXPECT_EQ(complaintsAbout(samples, true), QStringList());
    for (std::size_t number = 600; number < samples.size(); ++number) {
        samples[number].threads = 2;
    }
    EXPECT_EQ(complaintsAbout(samples, true).size(), 1);
}

TEST(Verdict, BearsTenDescriptorsMoreAtOneMomentAndNotEleven) {
    auto samples = flatRun(kTwoHours);
    samples[400].descriptors = 29;
    EXPECT_EQ(complaintsAbout(samples, true), QStringList());
    samples[400].descriptors = 30;
    EXPECT_EQ(complaintsAbout(samples, true),
              QStringList(QStringLiteral("descriptors rose to 30, mostly being 19")));
}

TEST(Verdict, BearsOneChildMoreAtOneMomentAndNotTwo) {
    auto samples = flatRun(kTwoHours);
    samples[400].children = 2;
    EXPECT_EQ(complaintsAbout(samples, true), QStringList());
    samples[400].children = 3;
    EXPECT_EQ(complaintsAbout(samples, true),
              QStringList(QStringLiteral("children rose to 3, mostly being 1")));
}

TEST(Verdict, BearsGrowthBelowAMebibytePerHour) {
    EXPECT_EQ(complaintsAbout(grown(flatRun(kTwoHours), &Sample::resident, 1'000), true),
              QStringList());
    EXPECT_EQ(complaintsAbout(grown(flatRun(kTwoHours), &Sample::resident, 1'050), true),
              QStringList(QStringLiteral("resident memory grows by 1050 KiB per hour (over 1.75 "
                                         "hours)")));
}

TEST(Verdict, LeavesMemoryOutWhereItSaysNothing) {
    EXPECT_EQ(complaintsAbout(grown(flatRun(kTwoHours), &Sample::resident, 9'000), false),
              QStringList());
}

TEST(Verdict, BearsAMebibyteInAllInARunShorterThanAnHour) {
    // Three quarters of ten minutes: 450 s, an eighth of an hour.
    EXPECT_EQ(complaintsAbout(grown(flatRun(61), &Sample::resident, 8'000), true), QStringList());
    EXPECT_EQ(complaintsAbout(grown(flatRun(61), &Sample::resident, 8'400), true).size(), 1);
}

TEST(Verdict, IsNotGivenWithoutSamples) {
    EXPECT_EQ(complaintsAbout({}, true).size(), 1);
    EXPECT_EQ(complaintsAbout(flatRun(3), true),
              QStringList(QStringLiteral("only 2 samples after the warm-up; 3 are needed")));
    EXPECT_EQ(complaintsAbout(flatRun(4), true), QStringList());
}

TEST(Verdict, FitsTheLineOfLeastSquaresAndTakesMediansOfQuarters) {
    auto samples = flatRun(8);
    const long residents[]{10, 20, 30, 40, 50, 60, 70, 80};
    for (std::size_t number = 0; number < samples.size(); ++number) {
        samples[number].resident = residents[number];
    }
    const Course course = courseOf(samples, &Sample::resident);
    EXPECT_DOUBLE_EQ(course.firstQuarter, 15);
    EXPECT_DOUBLE_EQ(course.lastQuarter, 75);
    EXPECT_NEAR(course.slopePerHour, 3600, 1e-6);
    EXPECT_EQ(course.smallest, 10);
    EXPECT_EQ(course.greatest, 80);
}

} // namespace
} // namespace orvanta::soak
