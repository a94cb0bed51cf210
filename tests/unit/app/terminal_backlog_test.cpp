// SPDX-License-Identifier: MIT
#include "app/terminal_backlog.h"

#include "unit/app/print_text.h"

#include <gtest/gtest.h>

namespace orvanta {
namespace {

QStringList filled(TerminalBacklog& backlog, int count) {
    const QString line(63, u'x');
    for (int index = 0; index < count; ++index) {
        backlog.add(line);
    }
    return backlog.take();
}

TEST(TerminalBacklog, KeepsLinesInOrderOnce) {
    TerminalBacklog backlog;
    backlog.add(QStringLiteral("one"));
    backlog.add(QStringLiteral("two"));
    EXPECT_EQ(backlog.take(), (QStringList{QStringLiteral("one"), QStringLiteral("two")}));
    EXPECT_TRUE(backlog.take().isEmpty());
}

TEST(TerminalBacklog, IsFullAtItsCapacity) {
    TerminalBacklog backlog;
    EXPECT_EQ(filled(backlog, 1024), QStringList(1024, QString(63, u'x')));
}

TEST(TerminalBacklog, SaysHowManyLinesItDropped) {
    TerminalBacklog backlog;
    const QStringList one = filled(backlog, 1025);
    ASSERT_EQ(one.size(), 1025);
    EXPECT_EQ(one.last(), QStringLiteral("(1 line was dropped because nobody read it)"));
    const QStringList more = filled(backlog, 1024 + 976);
    ASSERT_EQ(more.size(), 1025);
    EXPECT_EQ(more.last(), QStringLiteral("(976 lines were dropped because nobody read them)"));
}

TEST(TerminalBacklog, AShortLineDoesNotOvertakeADroppedOne) {
    TerminalBacklog backlog;
    backlog.add(QStringLiteral("first"));
    backlog.add(QString(70000, u'x'));
    backlog.add(QStringLiteral("short"));
    EXPECT_EQ(backlog.take(),
              (QStringList{QStringLiteral("first"),
                           QStringLiteral("(2 lines were dropped because nobody read them)")}));
}

} // namespace
} // namespace orvanta
