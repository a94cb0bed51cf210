// SPDX-License-Identifier: MIT
// Asks for an address whose name server is silent, twice: once until the exchange passes its limit
// of half a second, once until the session goes. Prints the milliseconds that each took to end.
// Exits with 77 when this user may have no network of its own, with 1 when no name was looked up.
#include "integration/http/exchange_outcome.h"
#include "integration/http_shared/silent_name_server.h"
#include "platform/curl/curl_sessions.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <cstdio>
#include <optional>

namespace {

using orvanta::CurlSessions;
using orvanta::Seconds;

constexpr int kNoNetwork = 77;
const QString kAddress = QStringLiteral("http://name.example/");

} // namespace

int main(int argc, char** argv) {
    orvanta::SilentNameServer nameServer;
    if (!nameServer.start()) {
        return kNoNetwork;
    }
    QCoreApplication application(argc, argv);
    std::optional<CurlSessions> sessions;
    sessions.emplace(orvanta::watchExit, orvanta::EnvironmentVariables{},
                     orvanta::HttpLimits{Seconds(0.5), Seconds::max()});
    const auto limited = outcomeOf(sessions->sharedSession()->get(kAddress));
    if (!limited.error || !nameServer.wasAsked()) {
        return 1;
    }
    const auto left = observe(sessions->sharedSession()->get(kAddress));
    if (!orvanta::spinUntil([&] { return nameServer.wasAsked(); }) || left->hasEnded()) {
        return 1;
    }
    QElapsedTimer clock;
    clock.start();
    sessions.reset();
    std::printf("%d %lld\n", static_cast<int>(limited.seconds * 1000),
                static_cast<long long>(clock.elapsed()));
    return left->abandoned ? 0 : 1;
}
