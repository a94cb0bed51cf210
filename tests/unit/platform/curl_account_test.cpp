// SPDX-License-Identifier: MIT
#include "platform/curl/curl_account.h"

#include <gtest/gtest.h>

namespace orvanta {
namespace {

const QByteArray kNoWords = "error=\nredirect=\n";

CurlAccount accountOf(const QByteArray& text) {
    CurlAccount account;
    EXPECT_TRUE(account.take(text));
    return account;
}

TEST(CurlAccount, TellsStatusAndLengthOfAWholeHead) {
    const CurlAccount account =
        accountOf("HTTP/1.1 404 Not Found\r\nServer: a\r\ncontent-LENGTH:  12 \r\n\r\n");
    EXPECT_TRUE(account.hasWholeHead());
    EXPECT_EQ(account.status(), 404);
    EXPECT_EQ(account.announcedLength(), 12);
    EXPECT_FALSE(account.isRedirect());
}

TEST(CurlAccount, TakesPiecesOfAnySize) {
    const QByteArray text = "HTTP/1.1 103 Hints\r\nLink: b\r\n\r\nHTTP/1.0 302 Found\r\n"
                            "Location: /c\r\nContent-Length: 5\r\n\r\n";
    for (qsizetype size = 1; size <= text.size(); ++size) {
        CurlAccount account;
        for (qsizetype from = 0; from < text.size(); from += size) {
            EXPECT_FALSE(account.hasWholeHead());
            EXPECT_TRUE(account.take(text.mid(from, size)));
        }
        EXPECT_TRUE(account.take("error=none\nredirect=http://a/c\n"));
        EXPECT_TRUE(account.hasWholeHead());
        EXPECT_EQ(account.status(), 302);
        EXPECT_EQ(account.announcedLength(), 5);
        EXPECT_TRUE(account.isRedirect());
        EXPECT_EQ(account.detail(), QStringLiteral("none"));
        EXPECT_EQ(account.redirect(), QStringLiteral("http://a/c"));
    }
}

TEST(CurlAccount, NeedsTheEmptyLineAtTheEndOfTheHead) {
    for (const char* text : {"", "\r\n", "HTTP/1.1 200 OK\r\n", "HTTP/1.1 200 OK\r\nA: b\r\n\r",
                             "HTTP/1.1 100 Continue\r\n\r\n", "HTTP/1.1 103 Hints\r\n\r\n\r\n"}) {
        CurlAccount account = accountOf(text);
        EXPECT_FALSE(account.hasWholeHead()) << text;
        EXPECT_TRUE(account.take(kNoWords));
        EXPECT_FALSE(account.hasWholeHead()) << text;
    }
    EXPECT_TRUE(accountOf("HTTP/1.1 200 OK\n\n").hasWholeHead());
    EXPECT_TRUE(accountOf("HTTP/1.1 101 Switching Protocols\r\n\r\n").hasWholeHead());
}

struct StatusLine {
    const char* text;
    int status;
};

class StatusLineTest : public ::testing::TestWithParam<StatusLine> {};

TEST_P(StatusLineTest, IsReadAsCurlReadsIt) {
    const CurlAccount account = accountOf(GetParam().text + QByteArray("\r\n\r\n"));
    EXPECT_EQ(account.status(), GetParam().status);
}

INSTANTIATE_TEST_SUITE_P(Lines, StatusLineTest,
                         ::testing::Values(StatusLine{"HTTP/1.1 200 OK", 200},
                                           StatusLine{"HTTP/1.1 200", 200},
                                           StatusLine{"HTTP/1.0  503  No", 503},
                                           StatusLine{"HTTP/2 204 ", 204}));

struct Length {
    const char* fields;
    std::optional<qsizetype> announced;
};

class LengthTest : public ::testing::TestWithParam<Length> {};

TEST_P(LengthTest, IsOnlyWhatTheServerSays) {
    const CurlAccount account = accountOf(GetParam().fields + QByteArray("\r\n\r\n"));
    EXPECT_EQ(account.announcedLength(), GetParam().announced);
}

INSTANTIATE_TEST_SUITE_P(
    Fields, LengthTest,
    ::testing::Values(
        Length{"HTTP/1.1 200 OK", std::nullopt}, Length{"HTTP/1.1 200 OK\r\nContent-Length: 0", 0},
        Length{"HTTP/1.1 200 OK\r\nContent-Length: 4294967296", 4294967296},
        Length{"HTTP/1.1 200 OK\r\nContent-Length: -1", std::nullopt},
        Length{"HTTP/1.1 200 OK\r\nContent-Length: many", std::nullopt},
        Length{"HTTP/1.1 200 OK\r\nContent-Length: 99999999999999999999", std::nullopt},
        Length{"HTTP/1.1 200 OK\r\nX-Content-Length: 7", std::nullopt},
        Length{"HTTP/1.1 304 Not Modified\r\nContent-Length: 7", std::nullopt},
        Length{"HTTP/1.1 204 No Content\r\nContent-Length: 7", std::nullopt},
        Length{"HTTP/1.1 103 Hints\r\nContent-Length: 7\r\n\r\nHTTP/1.1 200 OK", std::nullopt}));

TEST(CurlAccount, CallsARedirectWhatLeadsOn) {
    const auto isRedirect = [](int status, const char* field) {
        return accountOf("HTTP/1.1 " + QByteArray::number(status) + " A\r\n" + field + "\r\n\r\n")
            .isRedirect();
    };
    for (const int status : {301, 302, 303, 307, 308}) {
        EXPECT_TRUE(isRedirect(status, "location: /a")) << status;
        EXPECT_FALSE(isRedirect(status, "Location: ")) << status;
        EXPECT_FALSE(isRedirect(status, "Content-Location: /a")) << status;
    }
    for (const int status : {200, 201, 300, 304, 305, 306, 404}) {
        EXPECT_FALSE(isRedirect(status, "Location: /a")) << status;
    }
}

TEST(CurlAccount, TakesNothingFromTheTrailersOfABody) {
    const CurlAccount account = accountOf("HTTP/1.1 200 OK\r\nContent-Length: 3\r\n\r\n"
                                          "redirect=http://b/\r\nerror=trailer\r\n"
                                          "Location: /b\r\nHTTP/1.1 302 Found\r\n"
                                          "error=cut\nredirect=http://a/\n");
    EXPECT_EQ(account.status(), 200);
    EXPECT_EQ(account.announcedLength(), 3);
    EXPECT_FALSE(account.isRedirect());
    EXPECT_EQ(account.detail(), QStringLiteral("cut"));
    EXPECT_EQ(account.redirect(), QStringLiteral("http://a/"));
}

TEST(CurlAccount, HasNoWordsOfCurlWhereItSaidNone) {
    for (const char* text : {"", "HTTP/1.1 200 OK\r\n\r\n", "redirect=a\nerror=b\n"}) {
        EXPECT_EQ(accountOf(text).detail(), QString()) << text;
        EXPECT_EQ(accountOf(text).redirect(), QString()) << text;
    }
}

TEST(CurlAccount, RefusesAHeadWithoutAnEnd) {
    CurlAccount account = accountOf("HTTP/1.1 200 OK\r\n");
    const QByteArray field = "A: " + QByteArray(1021, 'b') + "\r\n";
    int taken = 0;
    while (taken < 2000 && account.take(field)) {
        ++taken;
    }
    EXPECT_EQ(taken, (1024 * 1024 - 17) / field.size());
}

} // namespace
} // namespace orvanta
