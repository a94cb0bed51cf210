// SPDX-License-Identifier: MIT
#include "orvanta_build_constants.h"
#include "platform/curl/curl_arguments.h"

#include <gtest/gtest.h>

#include <limits>
#include <utility>
#include <vector>

namespace orvanta {
namespace {

using Variable = EnvironmentVariables::Variable;

CurlSetup setupWith(std::vector<Variable> variables) {
    return curlSetup({}, EnvironmentVariables(std::move(variables)), QString());
}

QStringList argumentsWith(std::vector<Variable> variables, Seconds idle = Seconds(60)) {
    return curlArguments(HttpMethod::Get, QStringLiteral("https://a.example/b"),
                         setupWith(std::move(variables)), idle);
}

QString valueOf(const char* option, const QStringList& arguments) {
    return arguments.value(arguments.indexOf(QLatin1String(option)) + 1);
}

TEST(CurlArguments, OfAGetAreThese) {
    const QStringList expected{
        QStringLiteral("--disable"),
        QStringLiteral("--silent"),
        QStringLiteral("--no-buffer"),
        QStringLiteral("--dump-header"),
        QStringLiteral("/dev/stderr"),
        QStringLiteral("--suppress-connect-headers"),
        QStringLiteral("--write-out"),
        QStringLiteral("%{stderr}error=%{errormsg}\\nredirect=%{redirect_url}\\n"),
        QStringLiteral("--globoff"),
        QStringLiteral("--http1.1"),
        QStringLiteral("--proto"),
        QStringLiteral("=http,https"),
        QStringLiteral("--user-agent"),
        QStringLiteral("orvanta-tray/") + QLatin1String(build::kVersion),
        QStringLiteral("--noproxy"),
        QStringLiteral("localhost,127.0.0.0/8,::1,"),
        QStringLiteral("--connect-timeout"),
        QStringLiteral("600"),
        QStringLiteral("--speed-limit"),
        QStringLiteral("1"),
        QStringLiteral("--speed-time"),
        QStringLiteral("600"),
        QStringLiteral("--url"),
        QStringLiteral("https://a.example/b")};
    EXPECT_EQ(argumentsWith({}), expected);
}

TEST(CurlArguments, OfAPostSendAnEmptyBodyWithoutAType) {
    const QStringList arguments = curlArguments(
        HttpMethod::Post, QStringLiteral("http://a.example/"), setupWith({}), Seconds(1));
    EXPECT_EQ(arguments.mid(arguments.size() - 6),
              QStringList({QStringLiteral("--data"), QString(), QStringLiteral("--header"),
                           QStringLiteral("Content-Type:"), QStringLiteral("--url"),
                           QStringLiteral("http://a.example/")}));
}

TEST(CurlArguments, EndALeftoverWhateverTheLimitIs) {
    const auto patienceFor = [](double idle) {
        return valueOf("--speed-time", argumentsWith({}, Seconds(idle)));
    };
    EXPECT_EQ(patienceFor(0.25), QStringLiteral("3"));
    EXPECT_EQ(patienceFor(0), QStringLiteral("1"));
    EXPECT_EQ(patienceFor(-5), QStringLiteral("1"));
    EXPECT_EQ(patienceFor(std::numeric_limits<double>::quiet_NaN()), QStringLiteral("1"));
    EXPECT_EQ(patienceFor(std::numeric_limits<double>::infinity()), QStringLiteral("86400"));
    EXPECT_EQ(patienceFor(std::numeric_limits<double>::max()), QStringLiteral("86400"));
}

TEST(CurlArguments, KeepWhatNeedsNoProxyAsTheEnvironmentSays) {
    const auto withoutProxy = [](std::vector<Variable> variables) {
        return valueOf("--noproxy", argumentsWith(std::move(variables)));
    };
    EXPECT_EQ(withoutProxy({{"NO_PROXY", "a.example"}}),
              QStringLiteral("localhost,127.0.0.0/8,::1,a.example"));
    EXPECT_EQ(withoutProxy({{"NO_PROXY", "a.example"}, {"no_proxy", "b.example,c.example"}}),
              QStringLiteral("localhost,127.0.0.0/8,::1,b.example,c.example"));
    EXPECT_EQ(withoutProxy({{"NO_PROXY", "a.example"}, {"no_proxy", "*"}}), QStringLiteral("*"));
}

TEST(CurlArguments, AreOnlyForAddressesOfTheWeb) {
    for (const char* url : {"http://a", "https://a", "HTTP://a", "HtTpS://"}) {
        EXPECT_TRUE(isAddressForCurl(QLatin1String(url))) << url;
    }
    for (const char* url : {"", "a.example", "file:///a", "-http://a", "@http://a", " http://a",
                            "http:/a", "httpx://a", "ftp://http://"}) {
        EXPECT_FALSE(isAddressForCurl(QLatin1String(url))) << url;
    }
}

TEST(CurlArguments, TrustOnlyTheFileThatIsGiven) {
    const QStringList arguments = argumentsWith({{"SSL_CERT_FILE", "/a.pem"}});
    EXPECT_EQ(valueOf("--cacert", arguments), QStringLiteral("/a.pem"));
    EXPECT_EQ(valueOf("--capath", arguments), QStringLiteral("/dev/null"));
}

TEST(CurlArguments, TheEnvironmentSaysNothingOfTrust) {
    const EnvironmentVariables variables = setupWith({{"SSL_CERT_FILE", "/a"},
                                                      {"SSL_CERT_DIR", "/b"},
                                                      {"CURL_CA_BUNDLE", "/c"},
                                                      {"https_proxy", "http://proxy.example"},
                                                      {"LC_ALL", "de_DE.UTF-8"},
                                                      {"PATH", "/d"}})
                                               .environment;
    EXPECT_FALSE(variables.value("SSL_CERT_FILE"));
    EXPECT_FALSE(variables.value("SSL_CERT_DIR"));
    EXPECT_FALSE(variables.value("CURL_CA_BUNDLE"));
    EXPECT_EQ(variables.value("https_proxy"), "http://proxy.example");
    EXPECT_EQ(variables.value("LC_ALL"), "C.UTF-8");
    EXPECT_EQ(variables.value("PATH"), "/d");
}

} // namespace
} // namespace orvanta
