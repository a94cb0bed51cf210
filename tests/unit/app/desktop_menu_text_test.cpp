// SPDX-License-Identifier: MIT
#include "app/desktop_menu_text.h"

#include "unit/app/print_text.h"

#include <gtest/gtest.h>

namespace orvanta {
namespace {

constexpr int kUnlimited = MenuEntry::kUnlimitedLines;

/// As drawn by us.
QString shown(const QString& text, int maximumLines) {
    return desktopMenuText({.text = text, .maximumLines = maximumLines}, LongWords::areTorn);
}

/// As drawn by a host.
QString shownByHost(const QString& text, int maximumLines) {
    return desktopMenuText({.text = text, .maximumLines = maximumLines}, LongWords::stayWhole);
}

QString words(int count) {
    return QStringList(count, QStringLiteral("seven77")).join(u' ');
}

TEST(DesktopMenuText, ShortTextsStayAsTheyAre) {
    EXPECT_EQ(shown(QStringLiteral("R&D_1 <b>&amp;</b>  x"), 1),
              QStringLiteral("R&D_1 <b>&amp;</b>  x"));
    EXPECT_EQ(shown(QString(), 1), QString());
}

TEST(DesktopMenuText, FiftySixColumnsMakeALine) {
    EXPECT_EQ(shown(words(8), kUnlimited), words(7) + u'\n' + words(1));
    EXPECT_EQ(shown(words(7) + u'x', kUnlimited), words(7) + u'x');
    EXPECT_EQ(shown(words(6) + QStringLiteral(" seven/77x"), kUnlimited),
              words(6) + QStringLiteral("\nseven/77x"));
}

TEST(DesktopMenuText, AnErrorIsNeverCut) {
    EXPECT_EQ(shown(words(700), kUnlimited).count(u"seven77"), 700);
    EXPECT_EQ(shownByHost(words(700), kUnlimited).count(u"seven77"), 700);
}

TEST(DesktopMenuText, AWordLongerThanALineIsBrokenAfterItsSlashes) {
    const QString path = QStringLiteral("/seven77").repeated(8);
    for (const LongWords longWords : {LongWords::areTorn, LongWords::stayWhole}) {
        const MenuEntry entry{.text = QStringLiteral("in ") + path + QStringLiteral(" now"),
                              .maximumLines = kUnlimited};
        EXPECT_EQ(desktopMenuText(entry, longWords), QStringLiteral("in ") + path.left(49) + u'\n' +
                                                         path.mid(49) + QStringLiteral(" now"));
    }
}

TEST(DesktopMenuText, WhatIsLongerStillIsTornByUsAndStaysWholeForAHost) {
    const QString text = QStringLiteral("a/") + QString(60, u'x') + QStringLiteral(" b");
    EXPECT_EQ(shown(text, kUnlimited),
              QStringLiteral("a/\n") + QString(56, u'x') + QStringLiteral("\nxxxx b"));
    EXPECT_EQ(shownByHost(text, kUnlimited),
              QStringLiteral("a/\n") + QString(60, u'x') + QStringLiteral("\nb"));
}

TEST(DesktopMenuText, AWorkspaceIsCutToOneLine) {
    const QString cut = QString(55, u'w') + QChar(0x2026);
    EXPECT_EQ(shown(QString(80, u'w'), 1), cut);
    EXPECT_EQ(shownByHost(QString(80, u'w'), 1), cut);
    EXPECT_EQ(shown(QStringLiteral("a/").repeated(40), 1).count(u'\n'), 0);
}

TEST(DesktopMenuText, ARuntimeTextIsCutToTwoLines) {
    const QString text = shown(words(40), 2);
    EXPECT_EQ(text, words(7) + u'\n' + words(7).left(55) + QChar(0x2026));
    EXPECT_EQ(shownByHost(words(40), 2), text);
    EXPECT_EQ(shownByHost(words(1) + u' ' + QString(99, u'x'), 2),
              words(1) + u'\n' + QString(55, u'x') + QChar(0x2026));
}

TEST(DesktopMenuText, TheLinesOfAnErrorStayLines) {
    EXPECT_EQ(shown(QStringLiteral("one\ntwo\r\nthree\rfour\u2028five\n"), kUnlimited),
              QStringLiteral("one\ntwo\nthree\nfour\nfive"));
    EXPECT_EQ(shown(QStringLiteral("one\ntwo"), 2), QStringLiteral("one two"));
}

TEST(DesktopMenuText, TabsAreSpacesAndControlCharactersAreShownAsBroken) {
    EXPECT_EQ(shown(QStringLiteral("b\tc\x1b[1m"), 1), QStringLiteral("b c\uFFFD[1m"));
    EXPECT_EQ(shown(QStringLiteral("a") + QChar(0xD800) + u'b', 1), QStringLiteral("a\uFFFDb"));
}

TEST(DesktopMenuText, MarksOfTheWritingDirectionAndRarePlanesStay) {
    const QString text = QStringLiteral("\u200Fa\u202Eb\u202C\u2068c\u2069 \U0001F600");
    EXPECT_EQ(shown(text, 1), text);
}

} // namespace
} // namespace orvanta
