// SPDX-License-Identifier: MIT
#include "integration/http_shared/curl_test.h"
#include "integration/open_descriptors.h"
#include "platform/http/http_failure.h"
#include "platform/posix/file_descriptor.h"

#include <QRegularExpression>

#include <csignal>
#include <fcntl.h>

namespace orvanta {
namespace {

using CurlRun = CurlTest;

TEST_F(CurlRun, SaysWhatToDoWhenThereIsNoCurl) {
    const QString missing = m_folder.filePath(QStringLiteral("curl"));
    use(20, missing);
    const ExchangeOutcome outcome = get(QStringLiteral("http://127.0.0.1:1/"));
    ASSERT_TRUE(outcome.error);
    EXPECT_EQ(outcome.error->domain(), QStringLiteral("posix"));
    EXPECT_EQ(outcome.code(), ENOENT);
    EXPECT_EQ(outcome.description(),
              QStringLiteral("“%1” could not be started: No such file or directory. It fetches "
                             "runtimes; on Debian it is in the package “curl”.")
                  .arg(missing));
}

TEST_F(CurlRun, SaysThatItsEndCannotBeWatchedAndLeavesNothingBehind) {
    const auto before = openDescriptors().size();
    const PlatformError refusal(QStringLiteral("posix"), ENOMEM, QStringLiteral("No memory."));
    m_sessions = std::make_unique<CurlSessions>(
        [&](pid_t, const std::function<void()>&) -> std::unique_ptr<ExitWatch> { throw refusal; },
        EnvironmentVariables{}, HttpLimits{Seconds(20), Seconds::max()});
    const auto outcome = outcomeOf(m_sessions->sharedSession()->get(QStringLiteral("http://x/")));
    EXPECT_EQ(outcome.code(), ENOMEM);
    EXPECT_FALSE(hasChildren());
    EXPECT_EQ(openDescriptors().size(), before);
}

TEST_F(CurlRun, SaysThatCurlWasKilled) {
    ScriptedServer server([](QTcpSocket&) {});
    const QString note = m_folder.filePath(QStringLiteral("pid"));
    use(20, script("echo $$ > '" + note.toUtf8() + "'\nexec /usr/bin/curl \"$@\"\n"));
    const auto outcome = observe(m_session->get(server.url()));
    ASSERT_TRUE(spinUntil([&] { return server.requests() == 1; }));
    QFile file(note);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    ASSERT_EQ(::kill(file.readAll().trimmed().toInt(), SIGTERM), 0);
    ASSERT_TRUE(spinUntil([&] { return outcome->hasEnded(); }));
    EXPECT_EQ(outcome->code(), http_failure::kEndedBySignal + SIGTERM);
    EXPECT_EQ(outcome->description(),
              QStringLiteral("The exchange with the server at %1 failed: the program curl was "
                             "ended by signal 15.")
                  .arg(server.authority()));
}

TEST_F(CurlRun, SaysThatItLostSightOfCurl) {
    use(20, script("exit 0\n"));
    const auto outcome = observe(m_session->get(QStringLiteral("http://a.example/")));
    ASSERT_GT(::waitpid(-1, nullptr, 0), 0);
    ASSERT_TRUE(spinUntil([&] { return outcome->hasEnded(); }));
    EXPECT_EQ(outcome->description(),
              QStringLiteral("The exchange with the server at a.example failed: how the program "
                             "curl ended is not known."));
}

TEST_F(CurlRun, ReportsAnExitStatusThatCurlDoesNotExplain) {
    use(20, script("exit 4\n"));
    const ExchangeOutcome outcome = get(QStringLiteral("http://a.example:81/b"));
    EXPECT_EQ(outcome.code(), 4);
    EXPECT_EQ(outcome.description(),
              QStringLiteral("The exchange with the server at a.example:81 failed: curl ended "
                             "with status 4."));
}

#ifdef __linux__

TEST_F(CurlRun, GivesCurlNothingToReadAndNothingElseOpen) {
    use(20, script("printf 'HTTP/1.1 200 OK\\r\\n\\r\\n' >&2\ncat\nls -l /dev/fd/\n"
                   "echo error= >&2\necho redirect= >&2\n"));
    // One that is left to children.
    const FileDescriptor other(::open("/dev/null", O_RDONLY));
    const QByteArray listing =
        get(QStringLiteral("http://a.example/")).reply.value_or(HttpReply()).body;
    QStringList open;
    const QRegularExpression entry(QStringLiteral(" (\\d+) -> (\\S+)"));
    auto found = entry.globalMatch(QString::fromUtf8(listing));
    while (found.hasNext()) {
        const auto match = found.next();
        open += match.captured(1) + u' ' + match.captured(2).section(u':', 0, 0);
    }
    // The last is what ls itself has opened.
    ASSERT_EQ(open.size(), 4) << listing.toStdString();
    EXPECT_EQ(open.mid(0, 3), QStringList({QStringLiteral("0 /dev/null"), QStringLiteral("1 pipe"),
                                           QStringLiteral("2 pipe")}));
}

#endif

TEST_F(CurlRun, ReadsTheHeadBeforeTheBodyHoweverTheyCome) {
    // All is there, and the end of both streams, before the first of it is read.
    use(20, script("printf 'HTTP/1.1 200 OK\\r\\nContent-Length: 3\\r\\n\\r\\n' >&2\nprintf abc\n"
                   "printf 'error=\\nredirect=\\n' >&2\n"));
    const auto outcome = observe(m_session->get(QStringLiteral("http://a.example/")));
    siginfo_t child{};
    ASSERT_EQ(::waitid(P_ALL, 0, &child, WEXITED | WNOWAIT), 0);
    ASSERT_TRUE(spinUntil([&] { return outcome->hasEnded(); }));
    EXPECT_EQ(outcome->status(), 200);
    EXPECT_EQ(outcome->reply.value_or(HttpReply()).body, "abc");
}

TEST_F(CurlRun, EndsAHeadWithoutAnEnd) {
    use(20, script("printf 'HTTP/1.1 200 OK\\r\\n' >&2\nexec yes 'A: b' >&2\n"));
    const ExchangeOutcome outcome = get(QStringLiteral("http://a.example/"));
    EXPECT_EQ(outcome.code(), http_failure::kTooLarge);
    EXPECT_EQ(outcome.description(),
              QStringLiteral("The exchange with the server at a.example failed: the headers of the "
                             "reply are too long."));
}

TEST_F(CurlRun, NeedsBothStreamsToEnd) {
    use(20, script("printf 'HTTP/1.1 200 OK\\r\\n\\r\\n' >&2\n(sleep 0.3; printf late) 2>&- &\n"
                   "printf 'early '\n"));
    EXPECT_EQ(get(QStringLiteral("http://a.example/")).reply.value_or(HttpReply()).body,
              "early late");
}

TEST_F(CurlRun, LeavesNothingBehindAfterAHundredExchanges) {
    ScriptedServer good(replyWith(kOk));
    ScriptedServer cut(replyAndClose("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nab"));
    ScriptedServer large(replyWith("HTTP/1.1 200 OK\r\nContent-Length: 999\r\n\r\nab"));
    ScriptedServer leading(replyWith("HTTP/1.1 302 Found\r\nContent-Length: 0\r\nLocation: " +
                                     good.url().toUtf8() + "\r\n\r\n"));
    ASSERT_EQ(get(good.url()).status(), 200);
    spinFor(std::chrono::milliseconds(50));
    const auto before = openDescriptors();
    for (int i = 0; i < 25; ++i) {
        EXPECT_EQ(get(good.url()).status(), 200);
        EXPECT_EQ(get(leading.url()).status(), 200);
        EXPECT_EQ(get(cut.url()).code(), http_failure::kCutShort);
        EXPECT_EQ(outcomeOf(m_session->get(large.url(), 100)).code(), http_failure::kTooLarge);
    }
    EXPECT_TRUE(spinUntil([&] { return openDescriptors() == before; }, std::chrono::seconds(5)));
    EXPECT_TRUE(spinUntil([] { return !hasChildren(); }, std::chrono::seconds(5)));
}

TEST_F(CurlRun, ALimitKillsCurlAtOnce) {
    ScriptedServer server([](QTcpSocket&) {});
    use(0.3);
    const ExchangeOutcome outcome = get(server.url());
    EXPECT_EQ(outcome.code(), http_failure::kTimeIsOver);
    EXPECT_EQ(
        outcome.description(),
        QStringLiteral("The server at %1 did not respond for 0.3 s.").arg(server.authority()));
    EXPECT_TRUE(spinUntil([] { return !hasChildren(); }, std::chrono::seconds(5)));
}

} // namespace
} // namespace orvanta
