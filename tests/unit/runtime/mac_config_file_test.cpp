// SPDX-License-Identifier: MIT
#include "runtime/mac_config_file.h"

#include "base/json.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace orvanta {
namespace {

const QString kDefaultManifestBaseUrl = QString::fromLatin1(build::kManifestBaseUrl);

const MacRuntimeUpdateSettings kDefaultUpdates{.enabled = true,
                                               .channel = QStringLiteral("beta"),
                                               .manifestBaseUrl = kDefaultManifestBaseUrl,
                                               .checkOnStartup = true,
                                               .checkIntervalHours = 6};

/// A section with one wrong member beside a valid one that must not survive it.
const char* const kWronglyTypedFiles[] = {
    R"({"runtimeUpdates":{"enabled":"false","channel":"stable"}})",
    R"({"runtimeUpdates":{"enabled":0,"channel":"stable"}})",
    R"({"runtimeUpdates":{"channel":1,"enabled":false}})",
    R"({"runtimeUpdates":{"manifestBaseUrl":{},"enabled":false}})",
    R"({"runtimeUpdates":{"checkOnStartup":"yes","enabled":false}})",
    R"({"runtimeUpdates":{"checkIntervalHours":1.5,"enabled":false}})",
    R"({"runtimeUpdates":{"checkIntervalHours":"6","enabled":false}})",
    R"({"runtimeUpdates":{"checkIntervalHours":true,"enabled":false}})",
    R"({"runtimeUpdates":{"checkIntervalHours":9223372036854775808,"enabled":false}})",
    R"({"runtimeUpdates":[],"tray":{"httpTimeoutSeconds":30}})",
    R"({"runtimeUpdates":{"enabled":false},"tray":{"statusPollIntervalSeconds":"5"}})",
    R"({"runtimeUpdates":{"enabled":false},"tray":{"httpTimeoutSeconds":true}})",
    R"({"runtimeUpdates":{"enabled":false},"tray":{"httpResourceTimeoutSeconds":[8]}})",
    R"({"runtimeUpdates":{"enabled":false},"tray":{"httpTimeoutSeconds":1e400}})",
    R"({"runtimeUpdates":{"enabled":false},"tray":5})",
    R"({"runtimeUpdates":{"enabled":false,"channel":1},"tray":{"httpTimeoutSeconds":30}})",
    R"({"runtimeUpdates":{"enabled":false},"tray":{"httpTimeoutSeconds":30})",
    R"([{"runtimeUpdates":{"enabled":false}}])",
    "",
    "{\"runtimeUpdates\":{\"enabled\":false},\"x\":\"\xff\"}",
};

TEST(MacConfigFile, WithoutTheSectionsHasNone) {
    for (const char* file :
         {"{}", R"({"runtimeUpdates":null,"tray":null})", R"({"port":1,"RuntimeUpdates":1})"}) {
        EXPECT_EQ(MacConfigFile::decode(file), MacConfigFile{}) << file;
    }
}

TEST(MacConfigFile, EmptySectionsHoldTheDefaults) {
    const auto file = MacConfigFile::decode(R"({"runtimeUpdates":{},"tray":{}})");
    EXPECT_EQ(file.runtimeUpdates, kDefaultUpdates);
    EXPECT_EQ(file.tray, (MacTraySettings{5.0, 5.0, 8.0}));
}

TEST(MacConfigFile, NullMembersHoldTheDefaults) {
    const auto file = MacConfigFile::decode(
        R"({"runtimeUpdates":{"enabled":null,"channel":null,"manifestBaseUrl":null,
            "checkOnStartup":null,"checkIntervalHours":null},
            "tray":{"statusPollIntervalSeconds":null,"httpTimeoutSeconds":null,
            "httpResourceTimeoutSeconds":null}})");
    EXPECT_EQ(file.runtimeUpdates, kDefaultUpdates);
    EXPECT_EQ(file.tray, (MacTraySettings{5.0, 5.0, 8.0}));
}

TEST(MacConfigFile, KeepsEveryValueAsItIs) {
    const auto file = MacConfigFile::decode(
        R"({"runtimeUpdates":{"enabled":false,"channel":"","manifestBaseUrl":"http://h/m",
            "checkOnStartup":false,"checkIntervalHours":-3,"other":[]},
            "tray":{"statusPollIntervalSeconds":0,"httpTimeoutSeconds":-1.5,
            "httpResourceTimeoutSeconds":2.25,"other":1},"connector":{"enabled":"yes"}})");
    EXPECT_EQ(file.runtimeUpdates,
              (MacRuntimeUpdateSettings{.enabled = false,
                                        .channel = QString(),
                                        .manifestBaseUrl = QStringLiteral("http://h/m"),
                                        .checkOnStartup = false,
                                        .checkIntervalHours = -3}));
    EXPECT_EQ(file.tray, (MacTraySettings{0.0, -1.5, 2.25}));
}

TEST(MacConfigFile, AnyWrongTypeInTheSectionsFailsTheFile) {
    for (const char* file : kWronglyTypedFiles) {
        EXPECT_THROW(MacConfigFile::decode(file), JsonError) << file;
    }
}

TEST(MacRuntimeUpdateSettings, TakeOnlySenselessValuesFromTheDefaults) {
    const MacRuntimeUpdateSettings defaults{.enabled = true,
                                            .channel = QStringLiteral("d"),
                                            .manifestBaseUrl = QStringLiteral("http://d"),
                                            .checkOnStartup = true,
                                            .checkIntervalHours = 9};
    const MacRuntimeUpdateSettings senseless{.enabled = false,
                                             .channel = QString(),
                                             .manifestBaseUrl = QString(),
                                             .checkOnStartup = false,
                                             .checkIntervalHours = 0};
    EXPECT_EQ(senseless.withDefaults(defaults),
              (MacRuntimeUpdateSettings{.enabled = false,
                                        .channel = QStringLiteral("d"),
                                        .manifestBaseUrl = QStringLiteral("http://d"),
                                        .checkOnStartup = false,
                                        .checkIntervalHours = 9}));
    const MacRuntimeUpdateSettings blanks{.enabled = true,
                                          .channel = QStringLiteral(" "),
                                          .manifestBaseUrl = QStringLiteral("\t"),
                                          .checkOnStartup = true,
                                          .checkIntervalHours = 1};
    EXPECT_EQ(blanks.withDefaults(defaults), blanks);
}

struct UpdatesCase {
    const char* name;
    std::optional<QByteArray> file;
    bool enabled;
    const char* channel;
    QString manifestBaseUrl;
    bool checkOnStartup;
    std::int64_t checkIntervalHours;
};

void PrintTo(const UpdatesCase& c, std::ostream* stream) {
    *stream << c.name;
}

class EffectiveUpdateSettings : public testing::TestWithParam<UpdatesCase> {};

TEST_P(EffectiveUpdateSettings, FollowTheFile) {
    const auto& c = GetParam();
    EXPECT_EQ(effectiveRuntimeUpdateSettings(c.file, std::nullopt),
              (MacRuntimeUpdateSettings{.enabled = c.enabled,
                                        .channel = QString::fromLatin1(c.channel),
                                        .manifestBaseUrl = c.manifestBaseUrl,
                                        .checkOnStartup = c.checkOnStartup,
                                        .checkIntervalHours = c.checkIntervalHours}));
}

INSTANTIATE_TEST_SUITE_P(
    Files, EffectiveUpdateSettings,
    testing::Values(
        UpdatesCase{"NoFile", std::nullopt, true, "beta", kDefaultManifestBaseUrl, true, 6},
        UpdatesCase{"NoSection", R"({"tray":{}})", true, "beta", kDefaultManifestBaseUrl, true, 6},
        UpdatesCase{"EmptySection", R"({"runtimeUpdates": {}})", true, "beta",
                    kDefaultManifestBaseUrl, true, 6},
        UpdatesCase{"Everything",
                    R"({"runtimeUpdates":{"enabled":false,"channel":"stable",
                        "manifestBaseUrl":"http://127.0.0.1:1/m","checkOnStartup":false,
                        "checkIntervalHours":12}})",
                    false, "stable", QStringLiteral("http://127.0.0.1:1/m"), false, 12},
        UpdatesCase{"EmptyChannelAndZeroHours",
                    R"({"runtimeUpdates": {"channel": "", "checkIntervalHours": 0}})", true, "beta",
                    kDefaultManifestBaseUrl, true, 6},
        UpdatesCase{"EmptyBaseUrl", R"({"runtimeUpdates":{"manifestBaseUrl":""}})", true, "beta",
                    kDefaultManifestBaseUrl, true, 6},
        UpdatesCase{"NegativeHours", R"({"runtimeUpdates":{"checkIntervalHours":-3}})", true,
                    "beta", kDefaultManifestBaseUrl, true, 6},
        UpdatesCase{"OneHour", R"({"runtimeUpdates":{"checkIntervalHours":1}})", true, "beta",
                    kDefaultManifestBaseUrl, true, 1},
        UpdatesCase{"WholeHoursWithFraction", R"({"runtimeUpdates":{"checkIntervalHours":12.0}})",
                    true, "beta", kDefaultManifestBaseUrl, true, 12},
        UpdatesCase{"MostHours", R"({"runtimeUpdates":{"checkIntervalHours":9223372036854775807}})",
                    true, "beta", kDefaultManifestBaseUrl, true,
                    std::numeric_limits<std::int64_t>::max()},
        UpdatesCase{"BlankChannel", R"({"runtimeUpdates":{"channel":" "}})", true, " ",
                    kDefaultManifestBaseUrl, true, 6}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(EffectiveUpdateSettings, AreAllDefaultsForAFileThatCannotBeDecoded) {
    for (const char* file : kWronglyTypedFiles) {
        EXPECT_EQ(effectiveRuntimeUpdateSettings(file, std::nullopt), kDefaultUpdates) << file;
    }
}

struct SwitchCase {
    const char* name;
    const char* variable;
    bool enabled;
};

void PrintTo(const SwitchCase& c, std::ostream* stream) {
    *stream << c.variable;
}

class UpdatesVariable : public testing::TestWithParam<SwitchCase> {};

TEST_P(UpdatesVariable, CanOnlySwitchOff) {
    const auto variable = QString::fromUtf8(GetParam().variable);
    auto expected = kDefaultUpdates;
    expected.enabled = GetParam().enabled;
    EXPECT_EQ(effectiveRuntimeUpdateSettings(std::nullopt, variable), expected);
    expected.enabled = false;
    EXPECT_EQ(effectiveRuntimeUpdateSettings(R"({"runtimeUpdates":{"enabled":false}})", variable),
              expected);
}

INSTANTIATE_TEST_SUITE_P(
    Values, UpdatesVariable,
    testing::Values(SwitchCase{"LowerCase", "false", false},
                    SwitchCase{"UpperCase", "FALSE", false},
                    SwitchCase{"MixedCase", "False", false}, SwitchCase{"Zero", "0", false},
                    SwitchCase{"True", "true", true}, SwitchCase{"One", "1", true},
                    SwitchCase{"No", "no", true}, SwitchCase{"Off", "off", true},
                    SwitchCase{"Empty", "", true}, SwitchCase{"TwoZeros", "00", true},
                    SwitchCase{"BlankAfter", "false ", true},
                    SwitchCase{"BlankBefore", " 0", true}),
    [](const auto& test) { return std::string(test.param.name); });

struct TrayCase {
    const char* name;
    std::optional<QByteArray> file;
    MacTraySettings expected;
    double resourceLimit;
};

void PrintTo(const TrayCase& c, std::ostream* stream) {
    *stream << c.name;
}

class EffectiveTraySettings : public testing::TestWithParam<TrayCase> {};

TEST_P(EffectiveTraySettings, AreCorrectedOneByOne) {
    const auto settings = effectiveTraySettings(GetParam().file);
    EXPECT_EQ(settings.statusPollIntervalSeconds, GetParam().expected.statusPollIntervalSeconds);
    EXPECT_EQ(settings.httpTimeoutSeconds, GetParam().expected.httpTimeoutSeconds);
    EXPECT_EQ(settings.httpResourceTimeoutSeconds, GetParam().expected.httpResourceTimeoutSeconds);
    EXPECT_EQ(settings.sessionResourceTimeoutSeconds(), GetParam().resourceLimit);
}

INSTANTIATE_TEST_SUITE_P(
    Files, EffectiveTraySettings,
    testing::Values(
        TrayCase{"NoFile", std::nullopt, {5, 5, 8}, 8},
        TrayCase{"EmptyFile", QByteArray(""), {5, 5, 8}, 8},
        TrayCase{"NoSection", R"({"runtimeUpdates":{}})", {5, 5, 8}, 8},
        TrayCase{"EmptySection", R"({"tray":{}})", {5, 5, 8}, 8},
        TrayCase{"Everything",
                 R"({"tray":{"statusPollIntervalSeconds":0.5,"httpTimeoutSeconds":2,
                     "httpResourceTimeoutSeconds":3.5}})",
                 {0.5, 2, 3.5},
                 3.5},
        TrayCase{"TotalBelowIdleLimit",
                 R"({"tray":{"httpTimeoutSeconds":12,"httpResourceTimeoutSeconds":3}})",
                 {5, 12, 3},
                 12},
        TrayCase{"LongIdleLimit",
                 R"({"tray": {"httpTimeoutSeconds": 30, "httpResourceTimeoutSeconds": 10}})",
                 {5, 30, 10},
                 30},
        TrayCase{"ZeroAndNegative",
                 R"({"tray":{"statusPollIntervalSeconds":0,"httpTimeoutSeconds":-1}})",
                 {5, 5, 8},
                 8},
        TrayCase{"NegativePoll", R"({"tray": {"statusPollIntervalSeconds": -1}})", {5, 5, 8}, 8},
        TrayCase{"NegativeZero", R"({"tray":{"httpResourceTimeoutSeconds":-0.0}})", {5, 5, 8}, 8},
        TrayCase{"UnderflowIsZero", R"({"tray":{"httpTimeoutSeconds":1e-400}})", {5, 5, 8}, 8},
        TrayCase{"SmallestPositive",
                 R"({"tray":{"statusPollIntervalSeconds":1e-300}})",
                 {1e-300, 5, 8},
                 8},
        TrayCase{"OtherSectionWronglyTyped",
                 R"({"tray":{"httpTimeoutSeconds":30},"runtimeUpdates":{"enabled":1}})",
                 {5, 5, 8},
                 8}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(MacTraySettings, ReplaceWhatIsNotANumber) {
    const double notANumber = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ((MacTraySettings{notANumber, notANumber, notANumber}.corrected()),
              (MacTraySettings{5.0, 5.0, 8.0}));
}

} // namespace
} // namespace orvanta
