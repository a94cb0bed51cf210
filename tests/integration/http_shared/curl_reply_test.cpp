// SPDX-License-Identifier: MIT
#include "integration/http_shared/curl_test.h"
#include "platform/http/http_failure.h"

namespace orvanta {
namespace {

class CurlReply : public CurlTest {
protected:
    /// Of a server that says `reply` and closes.
    ExchangeOutcome replyOf(const QByteArray& reply) {
        ScriptedServer server(replyAndClose(reply));
        m_authority = server.authority();
        return get(server.url());
    }
    QString failure(const char* reason) const {
        return QStringLiteral("The exchange with the server at %1 failed: %2.")
            .arg(m_authority, QLatin1String(reason));
    }

    QString m_authority;
};

QByteArray bodyOf(const ExchangeOutcome& outcome) {
    EXPECT_TRUE(outcome.reply) << outcome.description().toStdString();
    return outcome.reply ? outcome.reply->body : QByteArray();
}

TEST_F(CurlReply, FailsWhenItEndsWithinItsHead) {
    for (const char* head : {"HTTP/1.1 200 OK\r\n", "HTTP/1.1 200 OK\r\nContent-Le",
                             "HTTP/1.1 100 Continue\r\n\r\n"}) {
        const ExchangeOutcome outcome = replyOf(head);
        EXPECT_TRUE(outcome.error) << head;
    }
    const ExchangeOutcome outcome = replyOf("HTTP/1.1 200 OK\r\nA: b\r\n");
    EXPECT_EQ(outcome.error.value().domain(), QStringLiteral("http"));
    EXPECT_EQ(outcome.code(), http_failure::kCutShort);
    EXPECT_EQ(outcome.description(), failure("the reply ended within its headers"));
}

TEST_F(CurlReply, FailsWhenItIsNotHttp) {
    const ExchangeOutcome old = replyOf("hello\r\n\r\n");
    EXPECT_EQ(old.description(), failure("Received HTTP/0.9 when not allowed"));
    const ExchangeOutcome none = replyOf("");
    EXPECT_EQ(none.description(), failure("Empty reply from server"));
}

TEST_F(CurlReply, FailsWhenItsHeadHasNoEnd) {
    const QByteArray field = "A: " + QByteArray(1000, 'b') + "\r\n";
    EXPECT_TRUE(replyOf("HTTP/1.1 200 OK\r\n" + field.repeated(2000)).error);
}

TEST_F(CurlReply, MayHaveInterimHeadsBeforeAndTrailersBehind) {
    const ExchangeOutcome outcome =
        replyOf("HTTP/1.1 103 Early Hints\r\nLink: a\r\n\r\n"
                "HTTP/1.1 201 Made\r\nTransfer-Encoding: chunked\r\n\r\n"
                "5\r\nhello\r\n0\r\nX-Trailer: yes\r\nredirect=http://a.example/\r\n\r\n");
    EXPECT_EQ(bodyOf(outcome), "hello");
    EXPECT_EQ(outcome.status(), 201);
}

TEST_F(CurlReply, MayHaveAnyBytesAndNone) {
    QByteArray every;
    for (int i = 0; i < 256; ++i) {
        every += static_cast<char>(i);
    }
    EXPECT_EQ(bodyOf(replyOf("HTTP/1.1 200 OK\r\n\r\n" + every)), every);
    EXPECT_EQ(bodyOf(replyOf("HTTP/1.1 200 OK\r\n\r\n")), "");
    EXPECT_EQ(bodyOf(replyOf("HTTP/1.0 200 OK\nContent-Length: 2\n\nok")), "ok");
}

TEST_F(CurlReply, KeepsTheExchangeAliveAsItDrips) {
    use(0.8);
    ScriptedServer slowHead(replyAndDrip("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n",
                                         QByteArray("A: b\r\n").repeated(5) + "\r\nok"));
    const ExchangeOutcome head = get(slowHead.url());
    EXPECT_EQ(bodyOf(head), "ok");
    EXPECT_GT(head.seconds, 1.5);
    ScriptedServer slowBody(
        replyAndDrip("HTTP/1.1 200 OK\r\nContent-Length: 32\r\n\r\n", QByteArray(32, '.')));
    const ExchangeOutcome body = get(slowBody.url());
    EXPECT_EQ(bodyOf(body), QByteArray(32, '.'));
    EXPECT_GT(body.seconds, 1.5);
}

TEST_F(CurlReply, IsRefusedAsSoonAsItAnnouncesTooMuch) {
    ScriptedServer server(replyWith("HTTP/1.1 200 OK\r\nContent-Length: 2000000\r\n\r\n"));
    const ExchangeOutcome outcome = outcomeOf(m_session->get(server.url(), 1024 * 1024));
    EXPECT_EQ(outcome.code(), http_failure::kTooLarge);
    EXPECT_EQ(outcome.description(),
              QStringLiteral("The reply of the server at %1 is larger than 1 MiB.")
                  .arg(server.authority()));
}

TEST_F(CurlReply, ToAPostIsReadAndDropped) {
    ScriptedServer server(replyWith("HTTP/1.1 404 No\r\nContent-Length: 4\r\n\r\ngone"));
    const ExchangeOutcome outcome = outcomeOf(m_session->post(server.url()));
    EXPECT_EQ(outcome.status(), 404);
    EXPECT_EQ(bodyOf(outcome), "");
    EXPECT_TRUE(server.received(0).startsWith("POST /api HTTP/1.1\r\n"));
    EXPECT_TRUE(server.received(0).contains("\r\nContent-Length: 0\r\n"));
    EXPECT_FALSE(server.received(0).contains("Content-Type"));
}

TEST_F(CurlReply, ThatLeadsNowhereIsAReplyAndNotFollowed) {
    const ExchangeOutcome nowhere = replyOf("HTTP/1.1 302 Found\r\nContent-Length: 4\r\n\r\npage");
    EXPECT_EQ(nowhere.status(), 302);
    EXPECT_EQ(bodyOf(nowhere), "page");
    const ExchangeOutcome notThat =
        replyOf("HTTP/1.1 305 Use Proxy\r\nLocation: http://127.0.0.1:1/\r\n"
                "Content-Length: 4\r\n\r\npage");
    EXPECT_EQ(notThat.status(), 305);
    EXPECT_EQ(bodyOf(notThat), "page");
}

TEST_F(CurlReply, ThatLeadsToNoAddressFails) {
    const auto leadingTo = [this](const char* location) {
        return replyOf(QByteArray("HTTP/1.1 302 Found\r\nLocation: ") + location + "\r\n\r\n");
    };
    const ExchangeOutcome notValid = leadingTo("http://[a/");
    EXPECT_EQ(notValid.code(), http_failure::kBadAddress);
    EXPECT_TRUE(notValid.description().startsWith(
        QStringLiteral("The address \"http://[a/\" is not valid: ")));
    EXPECT_EQ(leadingTo("file:///etc/hosts").description(),
              QStringLiteral("The address \"file:///etc/hosts\" is neither of http nor of https."));
}

TEST_F(CurlReply, ThatOnlyLeadsOnMayNotPourForEver) {
    ScriptedServer server(
        replyWith("HTTP/1.1 302 Found\r\nLocation: /b\r\n\r\n" + QByteArray(1024 * 1024 + 1, 'x')));
    EXPECT_EQ(get(server.url()).code(), http_failure::kTooLarge);
    EXPECT_EQ(server.requests(), 1);
}

TEST_F(CurlReply, AnAddressIsNeverAnOption) {
    const QString file = m_folder.filePath(QStringLiteral("file"));
    for (const QString& address : {QStringLiteral("--output"), QStringLiteral("-o") + file,
                                   QStringLiteral("@") + file, QStringLiteral("-"), QString()}) {
        const ExchangeOutcome outcome = get(address);
        EXPECT_EQ(outcome.code(), http_failure::kUnsupportedProtocol);
        EXPECT_EQ(
            outcome.description(),
            QStringLiteral("The address \"%1\" is neither of http nor of https.").arg(address));
    }
    ScriptedServer server(replyWith(kOk));
    const QString spaced = server.url(QStringLiteral("/a --output ") + file);
    EXPECT_EQ(get(spaced).code(), http_failure::kBadAddress);
    EXPECT_FALSE(QFile::exists(file));
    EXPECT_EQ(server.connections(), 0);
}

TEST_F(CurlReply, AnAddressIsTakenLetterByLetter) {
    ScriptedServer server(replyWith(kOk));
    EXPECT_EQ(get(server.url(QStringLiteral("/[1-3]{a,b}?-o=#1%20&c=\\d"))).status(), 200);
    EXPECT_EQ(server.connections(), 1);
    EXPECT_TRUE(server.received(0).startsWith("GET /[1-3]{a,b}?-o= HTTP/1.1\r\n"))
        << server.received(0).toStdString();
}

TEST_F(CurlReply, TheUsersSettingsOfCurlDoNotCount) {
    ScriptedServer server(replyWith(kOk));
    QFile settings(m_folder.filePath(QStringLiteral(".curlrc")));
    ASSERT_TRUE(settings.open(QIODevice::WriteOnly));
    settings.write("user-agent = \"other\"\nproxy = \"http://127.0.0.1:1\"\ninclude\n"
                   "header = \"X-Extra: 1\"\n");
    settings.close();
    ASSERT_TRUE(QFile::copy(settings.fileName(), m_folder.filePath(QStringLiteral("curlrc"))));
    const char* const homes[] = {"CURL_HOME", "XDG_CONFIG_HOME", "HOME"};
    const QByteArray home = qgetenv("HOME");
    for (const char* name : homes) {
        qputenv(name, m_folder.path().toUtf8());
    }
    EXPECT_EQ(bodyOf(get(server.url())), "ok");
    EXPECT_TRUE(server.received(0).contains("\r\nUser-Agent: orvanta-tray/"));
    EXPECT_FALSE(server.received(0).contains("X-Extra"));
    qunsetenv(homes[0]);
    qunsetenv(homes[1]);
    qputenv(homes[2], home);
}

} // namespace
} // namespace orvanta
