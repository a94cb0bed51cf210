// SPDX-License-Identifier: MIT
#include "runtime/runtime_manifest.h"

#include "base/json.h"
#include "orvanta_build_constants.h"

#include <gtest/gtest.h>

namespace orvanta {

namespace {

std::string trimmed(const char* text) {
    return trimmingTrailingSlashes(QString::fromLatin1(text)).toStdString();
}

QString tail() {
    return QLatin1Char('/') + QLatin1String(build::kPlatform) + QLatin1Char('/') +
           QLatin1String(build::kArch) + QStringLiteral("/manifest.json");
}

QString addressFor(const char* base, const char* channel) {
    MacRuntimeUpdateSettings settings;
    settings.manifestBaseUrl = QString::fromLatin1(base);
    settings.channel = QString::fromLatin1(channel);
    return manifestAddress(settings);
}

const MacRuntimeManifest kManifest{.version = QStringLiteral("1.5.0"),
                                   .channel = QStringLiteral("beta"),
                                   .platform = QStringLiteral("linux"),
                                   .arch = QStringLiteral("x86_64"),
                                   .archiveUrl = QStringLiteral("https://h/a.zip"),
                                   .sha256 = QStringLiteral("AB"),
                                   .publishedAt = QStringLiteral("p"),
                                   .notesUrl = QStringLiteral("n"),
                                   .minHostVersion = QStringLiteral("h"),
                                   .minRuntimeVersion = QStringLiteral("r"),
                                   .requiredReason = QStringLiteral("q")};

} // namespace

TEST(TrailingSlashes, AreAllRemoved) {
    EXPECT_EQ(trimmed("a///"), "a");
    EXPECT_EQ(trimmed("a/b/"), "a/b");
    EXPECT_EQ(trimmed("/a"), "/a");
    EXPECT_EQ(trimmed("///"), "");
    EXPECT_EQ(trimmed(""), "");
}

TEST(ManifestAddress, IsComposedOfBaseChannelPlatformAndProcessor) {
    const QString base = QString::fromLatin1(build::kManifestBaseUrl);
    EXPECT_EQ(manifestAddress({}), base + QStringLiteral("/beta") + tail());
    EXPECT_TRUE(base.endsWith(QStringLiteral("/desktop-connector/runtime")));
    EXPECT_EQ(addressFor("https://h/r///", "stable"),
              QStringLiteral("https://h/r/stable") + tail());
    EXPECT_EQ(addressFor("https://h", "My%20Channel/x"),
              QStringLiteral("https://h/My%20Channel/x") + tail());
}

TEST(ManifestAddress, MustBeAbsolute) {
    EXPECT_TRUE(isAbsoluteUrl(addressFor("https://h", "beta")));
    EXPECT_TRUE(isAbsoluteUrl(addressFor("http://127.0.0.1:8080/", "beta")));
    for (const char* base : {"", "///", "not a url", "downloads.example", "https://bad host",
                             "https://h:port", "://h", "https://[broken"}) {
        EXPECT_FALSE(isAbsoluteUrl(addressFor(base, "beta"))) << base;
    }
    EXPECT_FALSE(isAbsoluteUrl(addressFor("https://h", "two words")));
    EXPECT_FALSE(isAbsoluteUrl(QStringLiteral("archive.zip")));
    EXPECT_FALSE(isAbsoluteUrl(QStringLiteral("/archive.zip")));
    EXPECT_FALSE(isAbsoluteUrl(QStringLiteral("")));
}

TEST(Manifest, DecodesEveryField) {
    EXPECT_EQ(MacRuntimeManifest::decode(
                  R"({"version":"1.5.0","channel":"beta","platform":"linux","arch":"x86_64",
                      "archiveUrl":"https:\/\/h\/a.zip","sha256":"AB","publishedAt":"p",
                      "notesUrl":"n","minHostVersion":"h","minRuntimeVersion":"r",
                      "requiredReason":"q","unknown":[1]})"),
              kManifest);
}

TEST(Manifest, NeedsFiveFields) {
    const auto manifest = MacRuntimeManifest::decode(
        R"({"version":"","platform":"","arch":"","archiveUrl":"","sha256":"","channel":null})");
    EXPECT_EQ(manifest, MacRuntimeManifest{});
    for (const char* text : {
             R"({"platform":"","arch":"","archiveUrl":"","sha256":""})",
             R"({"version":"","arch":"","archiveUrl":"","sha256":""})",
             R"({"version":"","platform":"","archiveUrl":"","sha256":""})",
             R"({"version":"","platform":"","arch":"","sha256":""})",
             R"({"version":"","platform":"","arch":"","archiveUrl":""})",
             R"({"version":1,"platform":"","arch":"","archiveUrl":"","sha256":""})",
             R"({"version":"","platform":"","arch":"","archiveUrl":"","sha256":"","channel":1})",
             R"({"version":"","platform":"","arch":"","archiveUrl":"","sha256":"",
                 "minRuntimeVersion":1.5})",
             R"({"version":"","platform":"","arch":"","archiveUrl":"","sha256":"",
                 "minHostVersion":false})",
             R"({"version":"","platform":"","arch":"","archiveUrl":"","sha256":"",
                 "requiredReason":{}})",
             R"({"version":"","platform":"","arch":"","archiveUrl":"","sha256":"",
                 "publishedAt":0})",
             R"({"version":"","platform":"","arch":"","archiveUrl":"","sha256":"","notesUrl":[]})",
             "[]",
             "",
         }) {
        EXPECT_THROW(MacRuntimeManifest::decode(text), JsonError) << text;
    }
}

} // namespace orvanta
