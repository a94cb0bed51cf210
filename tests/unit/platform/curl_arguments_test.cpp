// SPDX-License-Identifier: MIT
#include "orvanta_build_constants.h"
#include "platform/curl/curl_arguments.h"

#include <gtest/gtest.h>

#include <limits>
#include <map>

namespace orvanta {
namespace {

class CurlArguments : public ::testing::Test {
protected:
    void SetUp() override {
        qunsetenv("no_proxy");
        qunsetenv("NO_PROXY");
    }

    static QString valueOf(const char* option, const QStringList& arguments) {
        return arguments.value(arguments.indexOf(QLatin1String(option)) + 1);
    }
};

TEST_F(CurlArguments, OfAGetAreThese) {
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
    EXPECT_EQ(curlArguments(HttpMethod::Get, QStringLiteral("https://a.example/b"), QString(),
                            Seconds(60)),
              expected);
}

TEST_F(CurlArguments, OfAPostSendAnEmptyBodyWithoutAType) {
    const QStringList arguments =
        curlArguments(HttpMethod::Post, QStringLiteral("http://a.example/"), QString(), Seconds(1));
    EXPECT_EQ(arguments.mid(arguments.size() - 6),
              QStringList({QStringLiteral("--data"), QString(), QStringLiteral("--header"),
                           QStringLiteral("Content-Type:"), QStringLiteral("--url"),
                           QStringLiteral("http://a.example/")}));
}

TEST_F(CurlArguments, EndALeftoverWhateverTheLimitIs) {
    const auto patienceFor = [](double idle) {
        return valueOf("--speed-time",
                       curlArguments(HttpMethod::Get, QString(), QString(), Seconds(idle)));
    };
    EXPECT_EQ(patienceFor(0.25), QStringLiteral("3"));
    EXPECT_EQ(patienceFor(0), QStringLiteral("1"));
    EXPECT_EQ(patienceFor(-5), QStringLiteral("1"));
    EXPECT_EQ(patienceFor(std::numeric_limits<double>::quiet_NaN()), QStringLiteral("1"));
    EXPECT_EQ(patienceFor(std::numeric_limits<double>::infinity()), QStringLiteral("86400"));
    EXPECT_EQ(patienceFor(std::numeric_limits<double>::max()), QStringLiteral("86400"));
}

TEST_F(CurlArguments, KeepWhatNeedsNoProxyAsTheEnvironmentSays) {
    const auto withoutProxy = [] {
        return valueOf("--noproxy",
                       curlArguments(HttpMethod::Get, QString(), QString(), Seconds(1)));
    };
    qputenv("NO_PROXY", "a.example");
    EXPECT_EQ(withoutProxy(), QStringLiteral("localhost,127.0.0.0/8,::1,a.example"));
    qputenv("no_proxy", "b.example,c.example");
    EXPECT_EQ(withoutProxy(), QStringLiteral("localhost,127.0.0.0/8,::1,b.example,c.example"));
    qputenv("no_proxy", "*");
    EXPECT_EQ(withoutProxy(), QStringLiteral("*"));
}

TEST_F(CurlArguments, AreOnlyForAddressesOfTheWeb) {
    for (const char* url : {"http://a", "https://a", "HTTP://a", "HtTpS://"}) {
        EXPECT_TRUE(isAddressForCurl(QLatin1String(url))) << url;
    }
    for (const char* url : {"", "a.example", "file:///a", "-http://a", "@http://a", " http://a",
                            "http:/a", "httpx://a", "ftp://http://"}) {
        EXPECT_FALSE(isAddressForCurl(QLatin1String(url))) << url;
    }
}

TEST_F(CurlArguments, TrustOnlyTheFileThatIsGiven) {
    const QStringList arguments =
        curlArguments(HttpMethod::Get, QString(), QStringLiteral("/a.pem"), Seconds(1));
    EXPECT_EQ(valueOf("--cacert", arguments), QStringLiteral("/a.pem"));
    EXPECT_EQ(valueOf("--capath", arguments), QStringLiteral("/dev/null"));
}

TEST_F(CurlArguments, TheEnvironmentSaysNothingOfTrust) {
    const std::map<QByteArray, QByteArray> set{{"SSL_CERT_FILE", "/a"},
                                               {"SSL_CERT_DIR", "/b"},
                                               {"CURL_CA_BUNDLE", "/c"},
                                               {"https_proxy", "http://proxy.example"},
                                               {"LC_ALL", "de_DE.UTF-8"}};
    for (const auto& [name, value] : set) {
        qputenv(name.constData(), value);
    }
    const EnvironmentVariables variables = curlEnvironment();
    for (const auto& [name, value] : set) {
        qunsetenv(name.constData());
    }
    EXPECT_FALSE(variables.value("SSL_CERT_FILE"));
    EXPECT_FALSE(variables.value("SSL_CERT_DIR"));
    EXPECT_FALSE(variables.value("CURL_CA_BUNDLE"));
    EXPECT_EQ(variables.value("https_proxy"), "http://proxy.example");
    EXPECT_EQ(variables.value("LC_ALL"), "C.UTF-8");
    EXPECT_EQ(variables.value("PATH"), qgetenv("PATH"));
}

} // namespace
} // namespace orvanta
