// SPDX-License-Identifier: MIT
#include "runtime/version_ordering.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>
#include <random>

namespace orvanta {

namespace {

constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kSmallest = std::numeric_limits<std::int64_t>::min();

struct Parsed {
    const char* text;
    ParsedVersion parts;
};

struct Compared {
    const char* left;
    const char* right;
    int order;
};

QStringList texts(std::initializer_list<const char*> items) {
    QStringList list;
    for (const char* item : items) {
        list.append(QString::fromUtf8(item));
    }
    return list;
}

/// Texts made of the pieces that the rules tell apart.
QString generatedVersion(std::mt19937& random) {
    static const QStringList kPieces = texts({"0",
                                              "1",
                                              "2",
                                              "10",
                                              "01",
                                              "-1",
                                              "+2",
                                              "v",
                                              ".",
                                              ".",
                                              ".",
                                              "-",
                                              "rc",
                                              "RC",
                                              "beta",
                                              "a",
                                              "+",
                                              " ",
                                              "99999999999999999999",
                                              ""});
    std::uniform_int_distribution<int> length(0, 8);
    std::uniform_int_distribution<int> piece(0, static_cast<int>(kPieces.size()) - 1);
    QString text;
    for (int count = length(random); count > 0; --count) {
        text += kPieces.at(piece(random));
    }
    return text;
}

} // namespace

class ParsedVersionTest : public ::testing::TestWithParam<Parsed> {};

TEST_P(ParsedVersionTest, TakesTheTextApart) {
    EXPECT_EQ(parsedVersion(QString::fromUtf8(GetParam().text)), GetParam().parts);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, ParsedVersionTest,
    ::testing::Values(Parsed{"1.2.3", {{1, 2, 3}, {}}}, Parsed{"v1.2", {{1, 2}, {}}},
                      Parsed{"1.2v", {{1, 2}, {}}}, Parsed{"vv3", {{3}, {}}},
                      Parsed{"V1.2", {{0, 2}, {}}}, Parsed{"v", {{}, {}}}, Parsed{"", {{}, {}}},
                      Parsed{" 2.0", {{0, 0}, {}}}, Parsed{"1..2", {{1, 2}, {}}},
                      Parsed{".1.", {{1}, {}}}, Parsed{"3a.x.3+build", {{0, 0, 0}, {}}},
                      Parsed{"9223372036854775807", {{kLargest}, {}}},
                      Parsed{"9223372036854775808", {{0}, {}}}, Parsed{"+5.1", {{5, 1}, {}}},
                      Parsed{"-rc.1", {{0, 1}, {}}}, Parsed{"1.0-", {{1, 0}, {}}},
                      Parsed{"-", {{}, {}}}, Parsed{"1.0-rc.1", {{1, 0}, texts({"rc", "1"})}},
                      Parsed{"1-a-b.c", {{1}, texts({"a-b", "c"})}},
                      Parsed{"1-a..b", {{1}, texts({"a", "b"})}},
                      Parsed{"1--9223372036854775808", {{1}, texts({"-9223372036854775808"})}},
                      Parsed{"--9223372036854775808", {{kSmallest}, {}}}, Parsed{"--", {{0}, {}}},
                      Parsed{"１.2", {{0, 2}, {}}}, Parsed{"1.0.0+build.5", {{1, 0, 0, 5}, {}}}));

class CompareVersionsTest : public ::testing::TestWithParam<Compared> {};

TEST_P(CompareVersionsTest, OrdersTheTwoBothWays) {
    const QString left = QString::fromUtf8(GetParam().left);
    const QString right = QString::fromUtf8(GetParam().right);
    EXPECT_EQ(compareVersions(left, right), GetParam().order);
    EXPECT_EQ(compareVersions(right, left), -GetParam().order);
}

INSTANTIATE_TEST_SUITE_P(
    Versions, CompareVersionsTest,
    ::testing::Values(
        Compared{"v1.10.0", "1.9.9", 1}, Compared{"1.2", "1.2.0", 0}, Compared{"1.2", "1.2.0.0", 0},
        Compared{"1.0.0", "1.0.0-beta", 1}, Compared{"1.0.0-beta", "1.0.0", -1},
        Compared{"1.0.0-beta.2", "1.0.0-beta.10", -1}, Compared{"1.0.0-alpha", "1.0.0-alpha.1", -1},
        Compared{"1.0.0-1", "1.0.0-alpha", -1}, Compared{"1.0.0-RC.1", "1.0.0-rc.1", 0},
        Compared{"1.0.0+build.5", "1.0.0", 1}, Compared{"bootstrap", "0", 0},
        Compared{" 2.0", "1.0", -1}, Compared{"", "0.0.0", 0}, Compared{"v1.2.0", "1.2.0", 0},
        Compared{"1.0-alpha", "1.0-beta", -1}, Compared{"1.0--1", "1.0-0", -1},
        Compared{"1.0-+2", "1.0-2", 0}, Compared{"1.0-99999999999999999999", "1.0-5", 1},
        Compared{"2-a.b", "2-a.b.c", -1}, Compared{"1", "2", -1}, Compared{"1.0-01", "1.0-1", 0},
        Compared{"01.0", "1.0", 0}, Compared{"1.010", "1.9", 1}, Compared{"1-a..b", "1-a.b", 0},
        Compared{"1-.", "1", 0}, Compared{"1.2v", "1.2", 0}, Compared{"1.0-rcv", "1.0-rc", 0},
        Compared{"1.0-dev", "1.0-de", 0}, Compared{"1.x", "1.0", 0}, Compared{"1.x", "1.1", -1},
        Compared{"1.x.1", "1.0", 1}));

TEST(VersionProperties, EveryVersionEqualsItselfAndTheOrderIsAntisymmetric) {
    std::mt19937 random(20'261);
    for (int round = 0; round < 20'000; ++round) {
        const QString left = generatedVersion(random);
        const QString right = generatedVersion(random);
        ASSERT_EQ(compareVersions(left, left), 0) << left.toStdString();
        ASSERT_EQ(compareVersions(left, right), -compareVersions(right, left))
            << left.toStdString() << " and " << right.toStdString();
    }
}

TEST(VersionProperties, TheOrderIsTransitive) {
    std::mt19937 random(20'262);
    int strict = 0;
    for (int round = 0; round < 20'000; ++round) {
        const std::array<QString, 3> versions{generatedVersion(random), generatedVersion(random),
                                              generatedVersion(random)};
        std::array<std::size_t, 3> order{0, 1, 2};
        do {
            const QString& one = versions[order[0]];
            const QString& two = versions[order[1]];
            const QString& three = versions[order[2]];
            const int first = compareVersions(one, two);
            const int second = compareVersions(two, three);
            if (first <= 0 && second <= 0) {
                // Two versions that are equal stand alike to every third one.
                ASSERT_EQ(compareVersions(one, three), std::min(first, second))
                    << one.toStdString() << ", " << two.toStdString() << ", "
                    << three.toStdString();
                strict += first < 0 && second < 0 ? 1 : 0;
            }
        } while (std::next_permutation(order.begin(), order.end()));
    }
    EXPECT_GT(strict, 4000) << "the versions generated are too much alike to prove anything";
}

} // namespace orvanta
