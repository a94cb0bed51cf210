// SPDX-License-Identifier: MIT
#include "connector/dashboard_address.h"

#include <gtest/gtest.h>

#include <string>

namespace orvanta {
namespace {

struct AddressCase {
    const char* name;
    const char* base;
    std::optional<QString> workspaceId;
    const char* expected;
};

void PrintTo(const AddressCase& c, std::ostream* stream) {
    *stream << c.base << ", " << c.workspaceId.value_or(QStringLiteral("nothing")).toStdString();
}

class DashboardAddress : public testing::TestWithParam<AddressCase> {};

TEST_P(DashboardAddress, IsOpened) {
    const QUrl base(QString::fromUtf8(GetParam().base));
    ASSERT_TRUE(base.isValid());
    const QUrl address = dashboardAddress(base, GetParam().workspaceId);
    EXPECT_TRUE(address.isValid());
    EXPECT_EQ(address.toEncoded().toStdString(), GetParam().expected);
}

#define ORIGIN "https://app.example:8443"
#define WORKSPACE(name, id, expected)                                                              \
    AddressCase {                                                                                  \
        name, ORIGIN, QStringLiteral(id), ORIGIN expected                                          \
    }

INSTANTIATE_TEST_SUITE_P(
    Workspaces, DashboardAddress,
    testing::Values(
        AddressCase{"Nothing", ORIGIN, std::nullopt, ORIGIN}, WORKSPACE("EmptyText", "", ""),
        WORKSPACE("Plain", "w42", "/workspace/w42"), WORKSPACE("Space", "a b", "/workspace/a%20b"),
        WORKSPACE("OnlyASpace", " ", "/workspace/%20"), WORKSPACE("Slash", "a/b", "/workspace/a/b"),
        WORKSPACE("LeadingSlash", "/a", "/workspace/a"),
        WORKSPACE("TwoLeadingSlashes", "//evil.example", "/workspace/evil.example"),
        WORKSPACE("QuestionMark", "a?b=c", "/workspace/a%3Fb=c"),
        WORKSPACE("NumberSign", "a#b", "/workspace/a%23b"),
        WORKSPACE("Percent", "100%", "/workspace/100%25"),
        WORKSPACE("PercentEncodedAlready", "a%20b", "/workspace/a%2520b"),
        WORKSPACE("NonAscii", "büro", "/workspace/b%C3%BCro"),
        WORKSPACE("Emoji", "😀", "/workspace/%F0%9F%98%80"),
        WORKSPACE("BracketsAndQuotes", "[a]\"<b>^`{|}\\",
                  "/workspace/%5Ba%5D%22%3Cb%3E%5E%60%7B%7C%7D%5C"),
        WORKSPACE("AllowedInAPath", "-._~!$&'()*+,;=:@", "/workspace/-._~!$&'()*+,;=:@"),
        WORKSPACE("ControlCharacter", "a\nb", "/workspace/a%0Ab"),
        WORKSPACE("ParentStaysAsItIs", "..", "/workspace/.."),
        WORKSPACE("LooksLikeAnAddress", "http://x", "/workspace/http://x")),
    [](const auto& test) { return std::string(test.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Bases, DashboardAddress,
    testing::Values(AddressCase{"TrailingSlash", "https://app.example/", QStringLiteral("w"),
                                "https://app.example/workspace/w"},
                    AddressCase{"Path", "https://app.example/base", QStringLiteral("w"),
                                "https://app.example/base/workspace/w"},
                    AddressCase{"PathWithTrailingSlash", "https://app.example/base/",
                                QStringLiteral("w"), "https://app.example/base/workspace/w"},
                    AddressCase{"EncodedPath", "https://app.example/a%2Fb%20c", QStringLiteral("w"),
                                "https://app.example/a%2Fb%20c/workspace/w"},
                    AddressCase{"Query", "https://app.example/base?x=1&y=%20",
                                QStringLiteral("a b"),
                                "https://app.example/base/workspace/a%20b?x=1&y=%20"},
                    AddressCase{"QueryWithoutPath", "https://app.example?x=1", QStringLiteral("w"),
                                "https://app.example/workspace/w?x=1"},
                    AddressCase{"Fragment", "https://app.example/#top", QStringLiteral("w"),
                                "https://app.example/workspace/w#top"},
                    AddressCase{"LoopbackPort", "http://127.0.0.1:5173", QStringLiteral("w"),
                                "http://127.0.0.1:5173/workspace/w"},
                    AddressCase{"UnchangedWithoutWorkspace", "https://app.example/base/?x=1#top",
                                std::nullopt, "https://app.example/base/?x=1#top"}),
    [](const auto& test) { return std::string(test.param.name); });

} // namespace
} // namespace orvanta
