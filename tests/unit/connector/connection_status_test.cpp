// SPDX-License-Identifier: MIT
#include "connector/connection_status.h"

#include "base/json.h"

#include <gtest/gtest.h>

#include <string>

namespace orvanta {

void PrintTo(ConnectorMenuState state, std::ostream* stream) {
    *stream << rawValue(state).toStdString();
}

namespace {

constexpr auto kOffline = ConnectorMenuState::offline;
constexpr auto kNotPaired = ConnectorMenuState::notPaired;
constexpr auto kOnline = ConnectorMenuState::online;

TEST(ConnectorMenuState, HasRawValues) {
    EXPECT_EQ(rawValue(kOffline), QStringLiteral("offline"));
    EXPECT_EQ(rawValue(kNotPaired), QStringLiteral("notPaired"));
    EXPECT_EQ(rawValue(kOnline), QStringLiteral("online"));
}

TEST(ConnectorMenuState, IsMadeFromExactlyItsRawValues) {
    EXPECT_EQ(menuStateFromRawValue(QStringLiteral("offline")), kOffline);
    EXPECT_EQ(menuStateFromRawValue(QStringLiteral("notPaired")), kNotPaired);
    EXPECT_EQ(menuStateFromRawValue(QStringLiteral("online")), kOnline);
    for (const char* text :
         {"", "Offline", "notpaired", "Not Paired", "ONLINE", "online ", " online"}) {
        EXPECT_EQ(menuStateFromRawValue(QString::fromLatin1(text)), std::nullopt) << text;
    }
}

TEST(ConnectorMenuState, HasAStatusLine) {
    EXPECT_EQ(statusText(kOffline), QStringLiteral("Offline"));
    EXPECT_EQ(statusText(kNotPaired), QStringLiteral("Not Paired"));
    EXPECT_EQ(statusText(kOnline), QStringLiteral("Online"));
}

TEST(TrayConnectionStatus, DecodesEveryMember) {
    const auto status = TrayConnectionStatus::decode(
        R"({"mode":"production","accessMode":"cloudflare-only","state":"RUNNING",
            "workspaceId":"w1","hostname":"h","webAppUrl":"https://app.example",
            "localServer":{"host":"127.0.0.1","port":3001,"baseUrl":"http://b","requestedPort":-1},
            "cloudflared":{"running":true,"healthy":false,"restartCount":9223372036854775807},
            "unknown":[{}]})");
    EXPECT_EQ(status.mode, QStringLiteral("production"));
    EXPECT_EQ(status.accessMode, QStringLiteral("cloudflare-only"));
    EXPECT_EQ(status.state, QStringLiteral("RUNNING"));
    EXPECT_EQ(status.workspaceId, QStringLiteral("w1"));
    EXPECT_EQ(status.hostname, QStringLiteral("h"));
    EXPECT_EQ(status.webAppUrl, QStringLiteral("https://app.example"));
    EXPECT_EQ(status.localServer, (LocalServerStatus{QStringLiteral("127.0.0.1"), 3001,
                                                     QStringLiteral("http://b"), -1}));
    EXPECT_EQ(status.cloudflared, (CloudflaredConnectionStatus{true, false, 9223372036854775807}));
}

TEST(TrayConnectionStatus, DecodesAbsentAndNullAlike) {
    EXPECT_EQ(TrayConnectionStatus::decode("{}"), TrayConnectionStatus{});
    EXPECT_EQ(TrayConnectionStatus::decode(
                  R"({"mode":null,"accessMode":null,"state":null,"workspaceId":null,
                      "hostname":null,"webAppUrl":null,"localServer":null,"cloudflared":null})"),
              TrayConnectionStatus{});
    const auto status = TrayConnectionStatus::decode(
        R"({"localServer":{"port":null},"cloudflared":{"running":null},"workspaceId":""})");
    EXPECT_EQ(status.localServer, LocalServerStatus{});
    EXPECT_EQ(status.cloudflared, CloudflaredConnectionStatus{});
    EXPECT_EQ(status.workspaceId, QString());
    EXPECT_TRUE(status.workspaceId.has_value());
}

TEST(TrayConnectionStatus, KeepsSenselessPorts) {
    const auto status = TrayConnectionStatus::decode(R"({"localServer":{"port":0}})");
    EXPECT_EQ(status.localServer->port, 0);
}

TEST(TrayConnectionStatus, AnyWrongTypeFailsTheDocument) {
    for (const char* document : {
             R"({"mode":1})",
             R"({"accessMode":true})",
             R"({"state":["RUNNING"]})",
             R"({"workspaceId":42})",
             R"({"hostname":{}})",
             R"({"webAppUrl":0})",
             R"({"localServer":"127.0.0.1"})",
             R"({"localServer":{"host":1}})",
             R"({"localServer":{"port":"3001"}})",
             R"({"localServer":{"port":3001.5}})",
             R"({"localServer":{"baseUrl":1}})",
             R"({"localServer":{"requestedPort":"0"}})",
             R"({"cloudflared":[]})",
             R"({"cloudflared":{"running":1}})",
             R"({"cloudflared":{"healthy":"true"}})",
             R"({"cloudflared":{"restartCount":"1"}})",
             R"({"cloudflared":{"restartCount":true}})",
             R"([{"state":"RUNNING"}])",
             R"({"state":"RUNNING")",
             "OK",
             "",
         }) {
        EXPECT_THROW(TrayConnectionStatus::decode(document), JsonError) << document;
    }
}

struct EvaluationCase {
    const char* name;
    const char* document;
    ConnectorMenuState expected;
};

void PrintTo(const EvaluationCase& c, std::ostream* stream) {
    *stream << c.document;
}

class Evaluation : public testing::TestWithParam<EvaluationCase> {};

TEST_P(Evaluation, GivesTheMenuState) {
    EXPECT_EQ(evaluate(TrayConnectionStatus::decode(GetParam().document)), GetParam().expected);
}

std::string nameOf(const testing::TestParamInfo<EvaluationCase>& test) {
    return test.param.name;
}

INSTANTIATE_TEST_SUITE_P(
    NotRunning, Evaluation,
    testing::Values(
        EvaluationCase{"NoState", "{}", kOffline},
        EvaluationCase{"NoStateButTheRest",
                       R"({"mode":"production","workspaceId":"w","hostname":"h",
                           "cloudflared":{"running":true,"healthy":true}})",
                       kOffline},
        EvaluationCase{"EmptyState", R"({"state":""})", kOffline},
        EvaluationCase{"Starting", R"({"state":"STARTING"})", kOffline},
        EvaluationCase{"StateWithBlank", R"({"state":"RUNNING "})", kOffline},
        EvaluationCase{"StateIsOnlyAPrefix", R"({"state":"RUN"})", kOffline},
        EvaluationCase{"NeedsPairing", R"({"state":"NEEDS_PAIRING"})", kNotPaired},
        EvaluationCase{"NeedsPairingInLowerCase", R"({"state":"needs_pairing"})", kNotPaired},
        EvaluationCase{"NeedsLogin", R"({"state":"NEEDS_LOGIN","workspaceId":"w1"})", kNotPaired},
        EvaluationCase{"NeedsLoginInMixedCase", R"({"state":"Needs_Login"})", kNotPaired},
        EvaluationCase{"NeedsLoginWithAllThatOnlineTakes",
                       R"({"state":"NEEDS_LOGIN","mode":"production","workspaceId":"w",
                           "hostname":"h","cloudflared":{"running":true,"healthy":true}})",
                       kNotPaired}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    RunningLocally, Evaluation,
    testing::Values(
        EvaluationCase{"LowerCase", R"({"state":"running"})", kOnline},
        EvaluationCase{"Development", R"({"state":"RUNNING","mode":"development"})", kOnline},
        EvaluationCase{"OtherAccessMode", R"({"state":"RUNNING","accessMode":"local"})", kOnline},
        EvaluationCase{"ModeWithBlank", R"({"state":"RUNNING","mode":"production "})", kOnline},
        EvaluationCase{"WhateverTheRestSays",
                       R"({"state":"RUNNING","mode":"","accessMode":"","workspaceId":"",
                           "hostname":"","cloudflared":{"running":false,"healthy":false}})",
                       kOnline}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    RunningRemotely, Evaluation,
    testing::Values(
        EvaluationCase{"NoWorkspace", R"({"state":"RUNNING","mode":"production"})", kNotPaired},
        EvaluationCase{"NoWorkspaceThoughTunnelUp",
                       R"({"state":"RUNNING","mode":"production","hostname":"h",
                           "cloudflared":{"running":true,"healthy":true}})",
                       kNotPaired},
        EvaluationCase{"EmptyWorkspaceByAccessMode",
                       R"({"state":"RUNNING","accessMode":"cloudflare-only",
                           "mode":"development","workspaceId":"","hostname":"h"})",
                       kNotPaired},
        EvaluationCase{"NoHostname",
                       R"({"state":"RUNNING","mode":"production","workspaceId":"w",
                           "cloudflared":{"running":true,"healthy":true}})",
                       kNotPaired},
        EvaluationCase{"EmptyHostname",
                       R"({"state":"RUNNING","mode":"production","workspaceId":"w",
                           "hostname":"","cloudflared":{"running":true,"healthy":true}})",
                       kNotPaired},
        EvaluationCase{"NoHostnameOutranksTunnelDown",
                       R"({"state":"RUNNING","mode":"production","workspaceId":"w",
                           "cloudflared":{"running":false,"healthy":false}})",
                       kNotPaired},
        EvaluationCase{"BlankWorkspaceIsNotEmpty",
                       R"({"state":"RUNNING","mode":"production","workspaceId":" ",
                           "hostname":" ","cloudflared":{"running":true,"healthy":true}})",
                       kOnline},
        EvaluationCase{"Unhealthy",
                       R"({"state":"RUNNING","mode":"Production","workspaceId":"w1",
                           "hostname":"h","cloudflared":{"running":true,"healthy":false}})",
                       kOffline},
        EvaluationCase{"Healthy",
                       R"({"state":"RUNNING","mode":"Production","workspaceId":"w1",
                           "hostname":"h","cloudflared":{"running":true,"healthy":true}})",
                       kOnline},
        EvaluationCase{"AccessModeInUpperCase",
                       R"({"state":"RUNNING","accessMode":"CLOUDFLARE-ONLY","workspaceId":"w1",
                           "hostname":"h"})",
                       kOffline},
        EvaluationCase{"NotRunningTunnel",
                       R"({"state":"RUNNING","mode":"production","workspaceId":"w1",
                           "hostname":"h","cloudflared":{"running":false,"healthy":true}})",
                       kOffline},
        EvaluationCase{"NullTunnel",
                       R"({"state":"RUNNING","mode":"Production","workspaceId":"w1",
                           "hostname":"h","cloudflared":null})",
                       kOffline},
        EvaluationCase{"EmptyTunnel",
                       R"({"state":"RUNNING","mode":"production","workspaceId":"w1",
                           "hostname":"h","cloudflared":{}})",
                       kOffline},
        EvaluationCase{"TunnelWithoutRunning",
                       R"({"state":"RUNNING","mode":"production","workspaceId":"w1",
                           "hostname":"h","cloudflared":{"healthy":true}})",
                       kOffline},
        EvaluationCase{"TunnelWithoutHealthy",
                       R"({"state":"RUNNING","mode":"production","workspaceId":"w1",
                           "hostname":"h","cloudflared":{"running":true}})",
                       kOffline}),
    nameOf);

TEST(Evaluation, WithoutADocumentIsOffline) {
    EXPECT_EQ(evaluate(std::nullopt), kOffline);
}

} // namespace
} // namespace orvanta
