// SPDX-License-Identifier: MIT
#include "platform/qt/identifiers.h"

#include <gtest/gtest.h>

#include <QRegularExpression>

#include <set>

namespace orvanta {
namespace {

TEST(Identifiers, AreRandomUuidsInUpperCase) {
    QtIdentifiers identifiers;
    const QRegularExpression form(QStringLiteral(
        "\\A[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}\\z"));
    std::set<QString> seen;
    for (int i = 0; i < 1000; ++i) {
        const QString uuid = identifiers.uuid();
        EXPECT_TRUE(form.match(uuid).hasMatch()) << uuid.toStdString();
        EXPECT_TRUE(seen.insert(uuid).second);
    }
}

} // namespace
} // namespace orvanta
