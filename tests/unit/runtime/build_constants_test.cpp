// SPDX-License-Identifier: MIT
#include "orvanta_build_constants.h"

#include <QUrl>

#include <gtest/gtest.h>

namespace orvanta {
namespace {

// The values can be overridden at build time; what must hold for every build is their form.

TEST(BuildConstants, WebAppOriginHasNoPath) {
    const QUrl origin(QString::fromLatin1(build::kWebAppOrigin), QUrl::StrictMode);
    EXPECT_TRUE(origin.isValid());
    EXPECT_FALSE(origin.scheme().isEmpty());
    EXPECT_FALSE(origin.host().isEmpty());
    EXPECT_EQ(origin.path(), QString());
}

TEST(BuildConstants, ManifestBaseUrlHasNoTrailingSlash) {
    const QUrl base(QString::fromLatin1(build::kManifestBaseUrl), QUrl::StrictMode);
    EXPECT_TRUE(base.isValid());
    EXPECT_FALSE(base.host().isEmpty());
    EXPECT_FALSE(base.path().endsWith(u'/'));
}

TEST(BuildConstants, TargetIsNamed) {
    EXPECT_STRNE(build::kPlatform, "");
    EXPECT_STRNE(build::kArch, "");
    EXPECT_STRNE(build::kVersion, "");
}

} // namespace
} // namespace orvanta
