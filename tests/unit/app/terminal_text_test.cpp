// SPDX-License-Identifier: MIT
#include "app/terminal_text.h"

#include "unit/app/print_text.h"

#include <gtest/gtest.h>

namespace orvanta {
namespace {

TEST(Harmless, LeavesOrdinaryTextAlone) {
    const QString text = QStringLiteral(u"Grüße, 世界, שלום 🙂 “ok”");
    EXPECT_EQ(harmless(text), text);
    EXPECT_EQ(harmless(QStringLiteral(" plain ~")), QStringLiteral(" plain ~"));
}

struct CharacterCase {
    char16_t character;
    char16_t shown;
};

class HarmlessCharacter : public testing::TestWithParam<CharacterCase> {};

TEST_P(HarmlessCharacter, IsShownAs) {
    const QString text = u'a' + QString(QChar(GetParam().character)) + u'b';
    EXPECT_EQ(harmless(text), u'a' + QString(QChar(GetParam().shown)) + u'b');
}

INSTANTIATE_TEST_SUITE_P(
    Characters, HarmlessCharacter,
    testing::Values(
        CharacterCase{0x00, 0xFFFD}, CharacterCase{0x07, 0xFFFD}, CharacterCase{0x1B, 0xFFFD},
        CharacterCase{0x1F, 0xFFFD}, CharacterCase{0x7F, 0xFFFD}, CharacterCase{0x80, 0xFFFD},
        CharacterCase{0x85, 0xFFFD}, CharacterCase{0x9B, 0xFFFD}, CharacterCase{0x061C, 0xFFFD},
        CharacterCase{0x200E, 0xFFFD}, CharacterCase{0x200F, 0xFFFD}, CharacterCase{0x202A, 0xFFFD},
        CharacterCase{0x202E, 0xFFFD}, CharacterCase{0x2066, 0xFFFD}, CharacterCase{0x2069, 0xFFFD},
        CharacterCase{0xD800, 0xFFFD}, CharacterCase{0xDC00, 0xFFFD}, CharacterCase{'\t', ' '},
        CharacterCase{'\n', ' '}, CharacterCase{'\r', ' '}, CharacterCase{0x2028, ' '},
        CharacterCase{0x2029, ' '}, CharacterCase{0x200D, 0x200D}, CharacterCase{0xA0, 0xA0}));

TEST(Harmless, ALineEndIsOneSpace) {
    EXPECT_EQ(harmless(QStringLiteral("a\r\nb")), QStringLiteral("a b"));
}

TEST(DisplayWidth, CountsColumns) {
    EXPECT_EQ(displayWidth(QString()), 0);
    EXPECT_EQ(displayWidth(QStringLiteral("abc")), 3);
    EXPECT_EQ(displayWidth(QStringLiteral(u"世界")), 4);
    EXPECT_EQ(displayWidth(QStringLiteral(u"한글")), 4);
    EXPECT_EQ(displayWidth(QStringLiteral(u"e\u0301")), 1);
    EXPECT_EQ(displayWidth(QStringLiteral(u"🙂")), 2);
    EXPECT_EQ(displayWidth(QStringLiteral(u"a\u200Db")), 2);
    EXPECT_EQ(displayWidth(QStringLiteral(u"…“”")), 3);
}

TEST(CutToWidth, CutsOnlyWhatDoesNotFit) {
    EXPECT_EQ(cutToWidth(QStringLiteral("abcde"), 5), QStringLiteral("abcde"));
    EXPECT_EQ(cutToWidth(QStringLiteral("abcdef"), 5), QStringLiteral(u"abcd…"));
    EXPECT_EQ(cutToWidth(QStringLiteral(u"世界世界"), 6), QStringLiteral(u"世界…"));
    EXPECT_EQ(cutToWidth(QStringLiteral(u"🙂🙂🙂"), 4), QStringLiteral(u"🙂…"));
}

TEST(WrapToWidth, BreaksAtSpacesAndInsideLongWords) {
    EXPECT_EQ(wrapToWidth(QStringLiteral("one two three"), 7),
              (QStringList{QStringLiteral("one two"), QStringLiteral("three")}));
    EXPECT_EQ(
        wrapToWidth(QStringLiteral("abcdefghij k"), 4),
        (QStringList{QStringLiteral("abcd"), QStringLiteral("efgh"), QStringLiteral("ij k")}));
    EXPECT_EQ(wrapToWidth(QStringLiteral(u"世界世界"), 5),
              (QStringList{QStringLiteral(u"世界"), QStringLiteral(u"世界")}));
    EXPECT_EQ(wrapToWidth(QString(), 5), QStringList{QString()});
}

TEST(WrapToWidth, LosesNothingButSpaces) {
    QString text;
    for (int word = 0; word < 200; ++word) {
        text += QString(word % 31 + 1, QChar(u'a' + word % 26)) + u' ';
    }
    const QStringList lines = wrapToWidth(text, 20);
    for (const QString& line : lines) {
        EXPECT_LE(displayWidth(line), 20);
    }
    EXPECT_EQ(lines.join(QString()).remove(u' '), QString(text).remove(u' '));
}

TEST(WrapToWidth, CutsTheLastOfTheLinesAllowed) {
    const QString text = QStringLiteral("one two three four five");
    EXPECT_EQ(wrapToWidth(text, 9, 2),
              (QStringList{QStringLiteral("one two"), QStringLiteral(u"three fo…")}));
    EXPECT_EQ(wrapToWidth(text, 9, 1), QStringList{QStringLiteral(u"one two …")});
    EXPECT_EQ(wrapToWidth(text, 30, 2), QStringList{text});
}

TEST(SplitAtWidth, KeepsSpaces) {
    EXPECT_EQ(splitAtWidth(QStringLiteral("a  b  c"), 3),
              (QStringList{QStringLiteral("a  "), QStringLiteral("b  "), QStringLiteral("c")}));
    EXPECT_EQ(splitAtWidth(QString(), 3), QStringList{QString()});
}

} // namespace
} // namespace orvanta
