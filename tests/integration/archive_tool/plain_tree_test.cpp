// SPDX-License-Identifier: MIT
#include "platform/posix/plain_tree.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>

#include <unistd.h>

namespace orvanta {

struct Link {
    const char* path;
    const char* target;
    bool isPlain;
};

class PlainTreeLink : public ::testing::TestWithParam<Link> {};

TEST_P(PlainTreeLink, MayOnlyLeadBelowTheTop) {
    const QTemporaryDir folder;
    QDir(folder.path()).mkpath(QStringLiteral("top/a/b"));
    const QString top = folder.filePath(QStringLiteral("top"));
    const QByteArray path = (top + QLatin1Char('/') + QLatin1String(GetParam().path)).toUtf8();
    ASSERT_EQ(::symlink(GetParam().target, path.constData()), 0);
    EXPECT_EQ(isPlainTree(top), GetParam().isPlain);
}

INSTANTIATE_TEST_SUITE_P(Links, PlainTreeLink,
                         ::testing::Values(Link{"l", "a", true}, Link{"l", "a/b/none", true},
                                           Link{"l", ".", true}, Link{"l", "./a//b", true},
                                           Link{"a/l", "..", true}, Link{"a/l", "../a/b", true},
                                           Link{"a/b/l", "../../a", true}, Link{"l", "..", false},
                                           Link{"l", "../top", false}, Link{"a/l", "../..", false},
                                           Link{"a/b/l", "../../../x", false},
                                           Link{"l", "/", false}, Link{"l", "/etc/hostname", false},
                                           Link{"l", "a/..", false},
                                           Link{"a/b/l", "../b/../..", false}));

} // namespace orvanta
