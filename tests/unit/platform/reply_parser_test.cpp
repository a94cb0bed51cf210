// SPDX-License-Identifier: MIT
#include "platform/beast/reply_parser.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace orvanta {

void PrintTo(ReplyParser::Progress progress, std::ostream* out) {
    static constexpr const char* kNames[] = {"unfinished", "complete", "malformed", "tooLarge"};
    *out << kNames[static_cast<int>(progress)];
}

namespace {

using Progress = ReplyParser::Progress;

constexpr qsizetype kLimit = 16;

struct Reply {
    const char* name;
    std::string bytes;
    int status;
    const char* body;
};

class WholeReply : public ::testing::TestWithParam<Reply> {};

TEST_P(WholeReply, IsReadHoweverItIsCut) {
    const auto& [name, bytes, status, body] = GetParam();
    for (std::size_t first = 0; first <= bytes.size(); ++first) {
        for (std::size_t second = first; second <= bytes.size(); ++second) {
            ReplyParser parser(kLimit);
            parser.read(std::string_view(bytes).substr(0, first));
            parser.read(std::string_view(bytes).substr(first, second - first));
            ASSERT_EQ(parser.read(std::string_view(bytes).substr(second)), Progress::complete)
                << first << ' ' << second;
            ASSERT_EQ(parser.status(), status);
            ASSERT_EQ(parser.takeBody(), body);
        }
    }
}

TEST_P(WholeReply, IsIncompleteWithoutItsLastByte) {
    const std::string& bytes = GetParam().bytes;
    ReplyParser parser(kLimit);
    EXPECT_EQ(parser.read(std::string_view(bytes).substr(0, bytes.size() - 1)),
              Progress::unfinished);
    EXPECT_FALSE(parser.finish());
}

TEST_P(WholeReply, IsFollowedByNothingThatCounts) {
    ReplyParser parser(kLimit);
    EXPECT_EQ(parser.read(GetParam().bytes + "HTTP/1.1 500 No\r\n\r\n"), Progress::complete);
    EXPECT_EQ(parser.read("more"), Progress::complete);
    EXPECT_TRUE(parser.finish());
    EXPECT_EQ(parser.status(), GetParam().status);
    EXPECT_EQ(parser.takeBody(), GetParam().body);
}

INSTANTIATE_TEST_SUITE_P(
    Replies, WholeReply,
    ::testing::Values(
        Reply{"sized", "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok", 200, "ok"},
        Reply{"as_large_as_may_be", "HTTP/1.1 200 OK\r\nContent-Length: 16\r\n\r\n0123456789abcdef",
              200, "0123456789abcdef"},
        Reply{"empty", "HTTP/1.1 503 No\r\nContent-Length: 0\r\n\r\n", 503, ""},
        Reply{"without_a_reason", "HTTP/1.1 200 \r\nContent-Length: 0\r\n\r\n", 200, ""},
        Reply{"old", "HTTP/1.0 404 No\r\nContent-Length: 1\r\n\r\nx", 404, "x"},
        Reply{"without_content", "HTTP/1.1 204 No\r\n\r\n", 204, ""},
        Reply{"not_modified", "HTTP/1.1 304 No\r\nContent-Length: 5\r\n\r\n", 304, ""},
        Reply{"chunked",
              "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"
              "3;a=b\r\nabc\r\nA\r\n0123456789\r\n0\r\nX: y\r\n\r\n",
              200, "abc0123456789"},
        Reply{"chunked_and_empty", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n",
              200, ""},
        Reply{"after_interim_ones",
              "HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 103 Hints\r\nA: b\r\n\r\n"
              "HTTP/1.1 201 Made\r\nContent-Length: 1\r\n\r\nx",
              201, "x"}),
    [](const auto& test) { return std::string(test.param.name); });

class NoReply : public ::testing::TestWithParam<const char*> {};

TEST_P(NoReply, IsMalformedAtOnceAndStaysSo) {
    ReplyParser parser(kLimit);
    EXPECT_EQ(parser.read(GetParam()), Progress::malformed);
    EXPECT_EQ(parser.read("HTTP/1.1 204 No\r\n\r\n"), Progress::malformed);
    EXPECT_FALSE(parser.finish());
}

INSTANTIATE_TEST_SUITE_P(
    Beginnings, NoReply,
    ::testing::Values("{", "SSH-2.0-x", "HTTQ", "HTTP/2 200 OK\r\n", "HTTP/1.1 abc No\r\n\r\n",
                      "HTTP/1.1 20 OK\r\n\r\n", "HTTP/1.1 099 OK\r\n\r\n",
                      "HTTP/1.1 101 Switching\r\n\r\n",
                      "HTTP/1.1 200 OK\r\nContent-Length: x\r\n\r\n",
                      "HTTP/1.1 200 OK\r\nContent-Length: -1\r\n\r\n",
                      "HTTP/1.1 200 OK\r\nContent-Length: 1\r\nContent-Length: 2\r\n\r\n",
                      "HTTP/1.1 200 OK\r\nContent-Length: 1\r\nTransfer-Encoding: chunked\r\n\r\n",
                      "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nxyz\r\n"));

TEST(ReplyParser, ABodyWithoutALengthEndsWithTheConnection) {
    ReplyParser parser(kLimit);
    EXPECT_EQ(parser.read("HTTP/1.1 200 OK\r\n\r\nsome"), Progress::unfinished);
    EXPECT_EQ(parser.read(" more"), Progress::unfinished);
    EXPECT_TRUE(parser.finish());
    EXPECT_EQ(parser.takeBody(), "some more");
}

TEST(ReplyParser, NothingIsNoReply) {
    ReplyParser parser(kLimit);
    EXPECT_EQ(parser.read(""), Progress::unfinished);
    EXPECT_FALSE(parser.finish());
    ReplyParser interim(kLimit);
    EXPECT_EQ(interim.read("HTTP/1.1 100 Continue\r\n\r\n"), Progress::unfinished);
    EXPECT_FALSE(interim.finish());
}

class LargeBody : public ::testing::TestWithParam<const char*> {};

TEST_P(LargeBody, IsRefused) {
    ReplyParser parser(kLimit);
    EXPECT_EQ(parser.read(GetParam()), Progress::tooLarge);
    EXPECT_FALSE(parser.finish());
}

TEST_P(LargeBody, MayBeOfAnySizeWhereItIsDropped) {
    ReplyParser parser(std::nullopt);
    EXPECT_EQ(parser.read(GetParam()), Progress::unfinished);
    EXPECT_EQ(parser.takeBody(), "");
}

INSTANTIATE_TEST_SUITE_P(
    Framings, LargeBody,
    ::testing::Values(
        "HTTP/1.1 200 OK\r\nContent-Length: 17\r\n\r\n",
        "HTTP/1.1 200 OK\r\nContent-Length: 17\r\n\r\n0123",
        "HTTP/1.1 200 OK\r\nContent-Length: 18446744073709551615\r\n\r\n",
        "HTTP/1.1 200 OK\r\n\r\n0123456789abcdefg",
        "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n8\r\n01234567\r\n9\r\n"));

struct Endless {
    const char* name;
    const char* beginning;
    const char* rest; ///< repeated for ever
};

class EndlessReply : public ::testing::TestWithParam<Endless> {};

TEST_P(EndlessReply, IsRefused) {
    ReplyParser parser(kLimit);
    std::string bytes = GetParam().beginning;
    std::string piece;
    while (piece.size() < 4096) {
        piece += GetParam().rest;
    }
    std::size_t read = 0;
    while (parser.read(bytes) == Progress::unfinished) {
        read += bytes.size();
        ASSERT_LT(read, 512 * 1024U);
        bytes = piece;
    }
    EXPECT_GE(read, 200 * 1024U);
    EXPECT_EQ(parser.read(""), Progress::malformed);
}

INSTANTIATE_TEST_SUITE_P(
    Places, EndlessReply,
    ::testing::Values(
        Endless{"line", "HTTP/1.1 200 OK\r\nX: ", "x"},
        Endless{"lines", "HTTP/1.1 200 OK\r\n", "X: y\r\n"},
        Endless{"interim", "HTTP/1.1 100 Go\r\n\r\n", "HTTP/1.1 100 Go\r\n\r\n"},
        Endless{"extension", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n1;", "x"},
        Endless{"trailer", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n0\r\nX: ", "x"},
        Endless{"trailers", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n",
                "X: y\r\n"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(ReplyParser, ALongHeaderIsReadOver) {
    const std::string field = "X: " + std::string(70'000, 'x') + "\r\n";
    ReplyParser parser(kLimit);
    EXPECT_EQ(parser.read("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n" + field +
                          "\r\n1\r\nx\r\n0\r\n" + field + "\r\n"),
              Progress::complete);
    EXPECT_EQ(parser.takeBody(), "x");
}

} // namespace
} // namespace orvanta
