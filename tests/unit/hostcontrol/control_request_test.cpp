// SPDX-License-Identifier: MIT
#include "hostcontrol/control_request.h"

#include <gtest/gtest.h>

namespace orvanta {
namespace {

/// Bytes that may hold NUL.
template <std::size_t size>
QByteArray bytes(const char (&literal)[size]) {
    return QByteArray(literal, static_cast<qsizetype>(size - 1));
}

TEST(ControlRequest, AcceptsWhateverBeginsWithThePostAndItsPath) {
    const QByteArray start = "POST /restart ";
    for (const QByteArray& rest :
         {QByteArray(), QByteArray("HTTP/1.1\r\nHost: 127.0.0.1:1\r\n\r\n"), QByteArray("HTTP/1.1"),
          QByteArray("nonsense"), QByteArray(" "), bytes("\0"),
          QByteArray("HTTP/1.1\r\n\r\n\"ü€😀\""), QByteArray(16370, 'x')}) {
        EXPECT_TRUE(isRestartRequest(start + rest)) << rest.left(80).toStdString();
    }
}

TEST(ControlRequest, RejectsEverythingElse) {
    for (const QByteArray& received :
         {QByteArray(), QByteArray("POST /restart"), QByteArray("POST /restart\r\n\r\n"),
          QByteArray("POST /restart\tHTTP/1.1\r\n\r\n"),
          QByteArray("GET /restart HTTP/1.1\r\n\r\n"), QByteArray("post /restart HTTP/1.1\r\n\r\n"),
          QByteArray("POST /Restart HTTP/1.1\r\n\r\n"),
          QByteArray("POST /restart/x HTTP/1.1\r\n\r\n"),
          QByteArray("POST /restart/ HTTP/1.1\r\n\r\n"),
          QByteArray("POST /restart?now=1 HTTP/1.1\r\n\r\n"),
          QByteArray("POST  /restart HTTP/1.1\r\n\r\n"),
          QByteArray(" POST /restart HTTP/1.1\r\n\r\n"),
          QByteArray("\r\nPOST /restart HTTP/1.1\r\n\r\n"),
          QByteArray("POST http://127.0.0.1/restart HTTP/1.1\r\n\r\n"),
          QByteArray("\xEF\xBB\xBFPOST /restart HTTP/1.1\r\n\r\n"), bytes("\0POST /restart ")}) {
        EXPECT_FALSE(isRestartRequest(received)) << received.toStdString();
    }
}

TEST(ControlRequest, RejectsBytesThatAreNotValidUtf8WhereverTheyStand) {
    const QByteArray request = "POST /restart HTTP/1.1\r\n\r\n";
    for (const QByteArray& invalid :
         {QByteArray("\xFF"), QByteArray("\x80"), QByteArray("\xC3"), QByteArray("\xC0\xAF"),
          QByteArray("\xE2\x82"), QByteArray("\xED\xA0\x80"), QByteArray("\xF4\x90\x80\x80"),
          QByteArray("\xF0\x80\x80\xAF")}) {
        EXPECT_FALSE(isRestartRequest(request + invalid)) << invalid.toHex().toStdString();
        EXPECT_FALSE(isRestartRequest(request + invalid + "\r\n")) << invalid.toHex().toStdString();
    }
}

TEST(ControlRequest, RepliesByteForByte) {
    EXPECT_EQ(controlReply(true), QByteArray("HTTP/1.1 202 Accepted\r\n"
                                             "Content-Type: application/json\r\n"
                                             "Content-Length: 17\r\n"
                                             "Connection: close\r\n"
                                             "\r\n"
                                             "{\"accepted\":true}"));
    EXPECT_EQ(controlReply(false), QByteArray("HTTP/1.1 404 Not Found\r\n"
                                              "Content-Type: application/json\r\n"
                                              "Content-Length: 18\r\n"
                                              "Connection: close\r\n"
                                              "\r\n"
                                              "{\"accepted\":false}"));
}

} // namespace
} // namespace orvanta
