// SPDX-License-Identifier: MIT
#include "runtime/runtime_records.h"

#include "base/json.h"

#include <gtest/gtest.h>

namespace orvanta {
namespace {

const MacRuntimeCurrentState kFullState{.currentVersion = QStringLiteral("1.2.3"),
                                        .previousVersion = QStringLiteral("1.2.2"),
                                        .lastHealthyVersion = QStringLiteral("1.2.1"),
                                        .channel = QStringLiteral("beta"),
                                        .lastCheckedAt = QStringLiteral("2026-11-15T21:37:51Z"),
                                        .availableVersion = QStringLiteral("release/1.3"),
                                        .updatedAt = QStringLiteral("2026-11-15T21:37:52Z"),
                                        .lastHealthyAt = QStringLiteral("2026-11-15T21:37:53Z"),
                                        .pendingHealthCheck = true};

const QByteArray kFullStateText = "{\n"
                                  "  \"availableVersion\" : \"release\\/1.3\",\n"
                                  "  \"channel\" : \"beta\",\n"
                                  "  \"currentVersion\" : \"1.2.3\",\n"
                                  "  \"lastCheckedAt\" : \"2026-11-15T21:37:51Z\",\n"
                                  "  \"lastHealthyAt\" : \"2026-11-15T21:37:53Z\",\n"
                                  "  \"lastHealthyVersion\" : \"1.2.1\",\n"
                                  "  \"pendingHealthCheck\" : true,\n"
                                  "  \"previousVersion\" : \"1.2.2\",\n"
                                  "  \"updatedAt\" : \"2026-11-15T21:37:52Z\"\n"
                                  "}";

const MacRuntimeMetadata kFullMetadata{.version = QStringLiteral("1.2.3"),
                                       .platform = QStringLiteral("linux"),
                                       .arch = QStringLiteral("x86_64"),
                                       .builtAt = QStringLiteral("2026-11-15T21:37:51Z"),
                                       .nodeVersion = QStringLiteral("v20.1.0"),
                                       .cloudflaredVersion = QStringLiteral("2026.1.0")};

const QByteArray kFullMetadataText = "{\n"
                                     "  \"arch\" : \"x86_64\",\n"
                                     "  \"builtAt\" : \"2026-11-15T21:37:51Z\",\n"
                                     "  \"cloudflaredVersion\" : \"2026.1.0\",\n"
                                     "  \"nodeVersion\" : \"v20.1.0\",\n"
                                     "  \"platform\" : \"linux\",\n"
                                     "  \"version\" : \"1.2.3\"\n"
                                     "}";

TEST(MacRuntimeCurrentState, EncodesEverything) {
    EXPECT_EQ(kFullState.encode(), kFullStateText);
}

TEST(MacRuntimeCurrentState, DecodesEverything) {
    EXPECT_EQ(MacRuntimeCurrentState::decode(kFullStateText), kFullState);
}

TEST(MacRuntimeCurrentState, EncodesOnlyWhatIsThere) {
    MacRuntimeCurrentState state;
    state.currentVersion = QStringLiteral("1.0");
    state.channel = QStringLiteral("stable");
    EXPECT_EQ(state.encode(),
              QByteArray("{\n  \"channel\" : \"stable\",\n  \"currentVersion\" : \"1.0\"\n}"));
}

TEST(MacRuntimeCurrentState, WritesFalse) {
    MacRuntimeCurrentState state;
    state.currentVersion = QStringLiteral("1.0");
    state.channel = QStringLiteral("beta");
    state.pendingHealthCheck = false;
    EXPECT_EQ(state.encode(), QByteArray("{\n  \"channel\" : \"beta\",\n"
                                         "  \"currentVersion\" : \"1.0\",\n"
                                         "  \"pendingHealthCheck\" : false\n}"));
}

TEST(MacRuntimeCurrentState, DecodesAbsentAndNullAlike) {
    const auto absent =
        MacRuntimeCurrentState::decode(R"({"currentVersion":"1","channel":"b","other":1})");
    const auto null = MacRuntimeCurrentState::decode(
        R"({"currentVersion":"1","channel":"b","previousVersion":null,"lastHealthyVersion":null,
            "lastCheckedAt":null,"availableVersion":null,"updatedAt":null,"lastHealthyAt":null,
            "pendingHealthCheck":null})");
    EXPECT_EQ(absent, null);
    EXPECT_EQ(absent.currentVersion, QStringLiteral("1"));
    EXPECT_EQ(absent.channel, QStringLiteral("b"));
    EXPECT_FALSE(absent.previousVersion.has_value());
    EXPECT_FALSE(absent.pendingHealthCheck.has_value());
}

TEST(MacRuntimeCurrentState, ReadsBothFormsOfSlash) {
    EXPECT_EQ(
        MacRuntimeCurrentState::decode(R"({"currentVersion":"a/b","channel":"c\/d"})").channel,
        QStringLiteral("c/d"));
}

TEST(MacRuntimeCurrentState, IsUnreadableAsAWhole) {
    for (const char* text : {
             R"({"currentVersion":"1"})",
             R"({"channel":"beta"})",
             R"({"currentVersion":null,"channel":"beta"})",
             R"({"currentVersion":1,"channel":"beta"})",
             R"({"currentVersion":"1","channel":true})",
             R"({"currentVersion":"1","channel":"b","previousVersion":1})",
             R"({"currentVersion":"1","channel":"b","lastHealthyVersion":1})",
             R"({"currentVersion":"1","channel":"b","lastCheckedAt":1})",
             R"({"currentVersion":"1","channel":"b","availableVersion":[]})",
             R"({"currentVersion":"1","channel":"b","updatedAt":1763242671})",
             R"({"currentVersion":"1","channel":"b","lastHealthyAt":{}})",
             R"({"currentVersion":"1","channel":"b","pendingHealthCheck":"true"})",
             R"({"currentVersion":"1","channel":"b","pendingHealthCheck":1})",
             R"({"currentVersion":"1","channel":"b")",
             "",
         }) {
        EXPECT_THROW(MacRuntimeCurrentState::decode(text), JsonError) << text;
    }
}

TEST(MacRuntimeMetadata, EncodesEverything) {
    EXPECT_EQ(kFullMetadata.encode(), kFullMetadataText);
}

TEST(MacRuntimeMetadata, DecodesEverything) {
    EXPECT_EQ(MacRuntimeMetadata::decode(kFullMetadataText), kFullMetadata);
}

TEST(MacRuntimeMetadata, EncodesOnlyWhatIsThere) {
    MacRuntimeMetadata metadata;
    metadata.version = QStringLiteral("1.0");
    metadata.platform = QStringLiteral("macos");
    metadata.arch = QStringLiteral("arm64");
    const QByteArray text = "{\n  \"arch\" : \"arm64\",\n  \"platform\" : \"macos\",\n"
                            "  \"version\" : \"1.0\"\n}";
    EXPECT_EQ(metadata.encode(), text);
    EXPECT_EQ(MacRuntimeMetadata::decode(text), metadata);
}

TEST(MacRuntimeMetadata, IsUnreadableAsAWhole) {
    for (const char* text : {
             R"({"platform":"linux","arch":"x86_64"})",
             R"({"version":"1","arch":"x86_64"})",
             R"({"version":"1","platform":"linux"})",
             R"({"version":1,"platform":"linux","arch":"x86_64"})",
             R"({"version":"1","platform":null,"arch":"x86_64"})",
             R"({"version":"1","platform":"linux","arch":[]})",
             R"({"version":"1","platform":"linux","arch":"x86_64","builtAt":1})",
             R"({"version":"1","platform":"linux","arch":"x86_64","nodeVersion":20})",
             R"({"version":"1","platform":"linux","arch":"x86_64","cloudflaredVersion":false})",
         }) {
        EXPECT_THROW(MacRuntimeMetadata::decode(text), JsonError) << text;
    }
}

} // namespace
} // namespace orvanta
