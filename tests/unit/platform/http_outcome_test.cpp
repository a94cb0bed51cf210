// SPDX-License-Identifier: MIT
#include "platform/http_session.h"

#include <gtest/gtest.h>

namespace orvanta {
namespace {

TEST(HttpOutcome, OfAReplyHasNoFailure) {
    HttpOutcome outcome(HttpReply{404, "not here"});
    EXPECT_EQ(outcome.failure(), nullptr);
    ASSERT_NE(outcome.reply(), nullptr);
    EXPECT_EQ(outcome.reply()->status, 404);
    const HttpReply taken = outcome.takeReply();
    EXPECT_EQ(taken.status, 404);
    EXPECT_EQ(taken.body, "not here");
}

TEST(HttpOutcome, OfAFailureThrowsItAtWhoeverNeedsTheReply) {
    HttpOutcome outcome(PlatformError(QStringLiteral("http"), 7, QStringLiteral("Nobody there.")));
    EXPECT_EQ(outcome.reply(), nullptr);
    ASSERT_NE(outcome.failure(), nullptr);
    EXPECT_EQ(outcome.failure()->code(), 7);
    try {
        outcome.takeReply();
        FAIL() << "there was a reply";
    } catch (const PlatformError& error) {
        EXPECT_EQ(error.domain(), QStringLiteral("http"));
        EXPECT_EQ(error.code(), 7);
        EXPECT_EQ(error.description(), QStringLiteral("Nobody there."));
    }
}

TEST(HttpOutcome, KeepsNothingOfTheBodyThatItHasGivenAway) {
    HttpOutcome outcome(HttpReply{200, QByteArray(1024, 'x')});
    const HttpReply taken = outcome.takeReply();
    EXPECT_EQ(taken.body, QByteArray(1024, 'x'));
    // An archive is given back before it is unpacked, which another reference would prevent.
    EXPECT_TRUE(taken.body.isDetached());
}

} // namespace
} // namespace orvanta
