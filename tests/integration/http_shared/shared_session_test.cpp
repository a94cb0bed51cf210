// SPDX-License-Identifier: MIT
#include "integration/http_shared/shared_session_test.h"

#include "integration/http/scripted_server.h"
#include "orvanta_build_constants.h"
#include "platform/http/http_failure.h"

#include <QDir>

namespace orvanta {
namespace {

TEST_F(SharedSessionTest, IsOneAndTheSame) {
    EXPECT_EQ(m_sessions->sharedSession(), m_sessions->sharedSession());
    EXPECT_EQ(CurlSessions::kSharedLimits.idle, Seconds(60));
}

TEST_F(SharedSessionTest, AcceptsOnlyServersThatAreTrusted) {
    EXPECT_EQ(get("https", "/ok").code(), kNotTrusted);
    // What a library sets in the process is not what it was started with.
    qputenv("SSL_CERT_FILE", s_server->authority().toUtf8());
    EXPECT_EQ(get("https", "/ok").code(), kNotTrusted);
    qputenv("SSL_CERT_FILE", "/nowhere");
    trustTheServer();
    set("SSL_CERT_DIR", "/nowhere");
    set("CURL_CA_BUNDLE", "/nowhere");
    EXPECT_EQ(bodyOf(get("https", "/ok")), "fine");
    // The certificate is for another name.
    EXPECT_EQ(get(QStringLiteral("https://127.0.0.1:%1/ok").arg(s_server->port("https"))).code(),
              kNotTrusted);
    qunsetenv("SSL_CERT_FILE");
}

TEST_F(SharedSessionTest, FindsTheTrustStoreFromItsOwnFolder) {
    set("SSL_CERT_FILE", QDir::current().relativeFilePath(s_server->authority()).toUtf8());
    EXPECT_EQ(bodyOf(get("https", "/ok")), "fine");
}

TEST_F(SharedSessionTest, FollowsRedirectsToEncryptionButNotAwayFromIt) {
    trustTheServer();
    EXPECT_EQ(bodyOf(get("http", "/to-http")), "fine");
    EXPECT_EQ(bodyOf(get("http", "/to-https")), "fine");
    EXPECT_EQ(bodyOf(get("https", "/to-https")), "fine");
    for (const auto& [scheme, path] :
         {std::pair("https", "/to-http"), {"http", "/there-and-back"}}) {
        const ExchangeOutcome outcome = get(scheme, path);
        EXPECT_FALSE(outcome.reply) << path;
        EXPECT_EQ(outcome.description(),
                  QStringLiteral("The server at localhost:%1 redirected to an address without "
                                 "encryption.")
                      .arg(s_server->port(scheme)));
    }
    EXPECT_EQ(get("http", "/to-file").code(), http_failure::kUnsupportedProtocol);
    EXPECT_EQ(get(QStringLiteral("file:///etc/hostname")).code(),
              http_failure::kUnsupportedProtocol);
}

TEST_F(SharedSessionTest, FollowsTwentyRedirects) {
    EXPECT_EQ(bodyOf(get("http", "/hops/20")), "arrived");
    EXPECT_EQ(get("http", "/hops/21").code(), http_failure::kTooManyRedirects);
}

TEST_F(SharedSessionTest, GivesEveryStatusWithItsBody) {
    const ExchangeOutcome missing = get("http", "/missing");
    EXPECT_EQ(missing.status(), 404);
    EXPECT_EQ(bodyOf(missing), "no such page");
    const ExchangeOutcome unchanged = get("http", "/unchanged");
    EXPECT_EQ(unchanged.status(), 304);
    EXPECT_EQ(bodyOf(unchanged), "");
}

TEST_F(SharedSessionTest, SaysWhoItIsAndAsksForNothingSpecial) {
    const QByteArray expected = QByteArray("GET 1.1\nHost\nlocalhost:") +
                                QByteArray::number(s_server->port("http")) +
                                "\nUser-Agent\norvanta-tray/" + build::kVersion + "\nAccept\n*/*";
    EXPECT_EQ(bodyOf(get("http", "/request")), expected);
    EXPECT_EQ(bodyOf(get("http", "/cookie")), expected);
}

TEST_F(SharedSessionTest, FailsWhenTheReplyIsCut) {
    trustTheServer();
    for (const char* scheme : {"http", "https"}) {
        for (const char* path : {"/cut", "/cut-chunks"}) {
            const ExchangeOutcome outcome = get(scheme, path);
            EXPECT_TRUE(outcome.error) << scheme << path;
        }
    }
}

TEST_F(SharedSessionTest, LimitsSilenceAndNotTheWhole) {
    const ExchangeOutcome drip = get("http", "/drip");
    EXPECT_EQ(bodyOf(drip), "..........");
    EXPECT_GT(drip.seconds, 1.8 * kIdle);
    const ExchangeOutcome silence = get("http", "/silence");
    EXPECT_EQ(silence.code(), http_failure::kTimeIsOver);
    EXPECT_GE(silence.seconds, kIdle);
    EXPECT_LT(silence.seconds, kIdle + 5);
}

TEST_F(SharedSessionTest, TakesLargeBodies) {
    trustTheServer();
    for (const char* scheme : {"http", "https"}) {
        EXPECT_EQ(bodyOf(get(scheme, "/large")), QByteArray(40 * 1024 * 1024, 'x'));
    }
}

TEST_F(SharedSessionTest, EndsAReplyThatIsLargerThanTheCallerWants) {
    const auto upTo = [this](qsizetype largestBody) {
        return outcomeOf(
            m_sessions->sharedSession()->get(s_server->url("http", "/large"), largestBody));
    };
    constexpr qsizetype kMebibyte = 1024 * 1024;
    EXPECT_EQ(bodyOf(upTo(40 * kMebibyte)).size(), 40 * kMebibyte);
    EXPECT_EQ(upTo(40 * kMebibyte - 1).code(), http_failure::kTooLarge);
    EXPECT_EQ(upTo(kMebibyte).description(),
              QStringLiteral("The reply of the server at localhost:%1 is larger than 1 MiB.")
                  .arg(s_server->port("http")));
}

TEST_F(SharedSessionTest, DropsALargePageThatIsNotWhatTheCallerWants) {
    const ExchangeOutcome outcome = outcomeOf(
        m_sessions->sharedSession()->get(s_server->url("http", "/large-and-missing"), 1024));
    EXPECT_EQ(outcome.status(), 404);
    EXPECT_EQ(bodyOf(outcome), "");
}

TEST_F(SharedSessionTest, FailsWhereNobodyListens) {
    EXPECT_EQ(get(QStringLiteral("http://127.0.0.1:1/")).code(), http_failure::kNotReached);
    EXPECT_EQ(get(QStringLiteral("https://name.invalid/")).code(), kNameUnknown);
}

TEST_F(SharedSessionTest, NeverSendsAPostTwice) {
    const ExchangeOutcome redirected =
        outcomeOf(m_sessions->sharedSession()->post(s_server->url("http", "/once-more")));
    EXPECT_EQ(redirected.status(), 307);
    ScriptedServer closing(replyAndClose(QByteArray()));
    EXPECT_TRUE(outcomeOf(m_sessions->sharedSession()->post(closing.url())).error);
    EXPECT_EQ(closing.requests(), 1);
}

} // namespace
} // namespace orvanta
