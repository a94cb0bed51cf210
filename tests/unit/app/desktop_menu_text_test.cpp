// SPDX-License-Identifier: MIT
#include "app/desktop_menu_text.h"

#include "unit/app/print_text.h"

#include <gtest/gtest.h>

namespace orvanta {
namespace {

MenuEntry line(const QString& text, int maximumLines) {
    return {.text = text, .maximumLines = maximumLines};
}

QString words(int count) {
    return QStringList(count, QStringLiteral("seven77")).join(u' ');
}

TEST(DesktopMenuText, ShortTextsStayAsTheyAre) {
    EXPECT_EQ(desktopMenuText(line(QStringLiteral("R&D_1 <b>&amp;</b>"), 1)),
              QStringLiteral("R&D_1 <b>&amp;</b>"));
    EXPECT_EQ(desktopMenuText(line(QString(), 1)), QString());
}

TEST(DesktopMenuText, FiftySixColumnsMakeALine) {
    EXPECT_EQ(desktopMenuText(line(words(8), MenuEntry::kUnlimitedLines)),
              words(7) + u'\n' + words(1));
    EXPECT_EQ(desktopMenuText(line(words(7) + u'x', MenuEntry::kUnlimitedLines)), words(7) + u'x');
}

TEST(DesktopMenuText, AnErrorIsNeverCut) {
    EXPECT_EQ(desktopMenuText(line(words(700), MenuEntry::kUnlimitedLines)).count(u"seven77"), 700);
}

TEST(DesktopMenuText, AWorkspaceIsCutToOneLine) {
    EXPECT_EQ(desktopMenuText(line(QString(80, u'w'), 1)), QString(55, u'w') + QChar(0x2026));
}

TEST(DesktopMenuText, ARuntimeTextIsCutToTwoLines) {
    const QString text = desktopMenuText(line(words(40), 2));
    EXPECT_EQ(text.count(u'\n'), 1);
    EXPECT_TRUE(text.endsWith(QChar(0x2026))) << text.toStdString();
    EXPECT_TRUE(text.startsWith(words(7) + u'\n'));
}

TEST(DesktopMenuText, LineEndsAndTabsAreSpacesAndControlCharactersAreShownAsBroken) {
    EXPECT_EQ(desktopMenuText(line(QStringLiteral("a\nb\tc\x1b[1m"), 1)),
              QStringLiteral("a b c\uFFFD[1m"));
}

} // namespace
} // namespace orvanta
