// SPDX-License-Identifier: MIT
#include "connector/port_announcement.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

namespace orvanta {
namespace {

struct LineCase {
    const char* name;
    QString line;
    std::optional<std::int64_t> expected;
};

void PrintTo(const LineCase& c, std::ostream* stream) {
    *stream << c.line.toStdString();
}

std::string nameOf(const testing::TestParamInfo<LineCase>& test) {
    return test.param.name;
}

class PortAnnouncement : public testing::TestWithParam<LineCase> {};

TEST_P(PortAnnouncement, IsRecognised) {
    EXPECT_EQ(parsePort(GetParam().line), GetParam().expected);
}

#define LINE(name, text, expected)                                                                 \
    LineCase {                                                                                     \
        name, QStringLiteral(text), expected                                                       \
    }
constexpr std::nullopt_t kAbsent = std::nullopt;

INSTANTIATE_TEST_SUITE_P(
    StartUpLine, PortAnnouncement,
    testing::Values(
        LINE("Address", "Desktop Connector running on http://127.0.0.1:51234", 51234),
        LINE("WithinALine", "[info] Desktop Connector running on http://localhost:3001/ (pid 42)",
             3001),
        LINE("DigitsEndAtALetter", "Desktop Connector running on http://localhost:3001x", 3001),
        LINE("AnyAddress", "Desktop Connector running on http://0.0.0.0:3000", kAbsent),
        LINE("LowerCase", "desktop connector running on http://127.0.0.1:3000", kAbsent),
        LINE("UpperCaseHost", "Desktop Connector running on http://LOCALHOST:3000", kAbsent),
        LINE("Encrypted", "Desktop Connector running on https://127.0.0.1:3000", kAbsent),
        LINE("OtherNameBeginningAlike",
             "Desktop Connector running on http://localhost.example:3000", kAbsent),
        LINE("PointsAreNoWildcards", "Desktop Connector running on http://127x0x0x1:3000", kAbsent),
        LINE("NoPort", "Desktop Connector running on http://127.0.0.1/", kAbsent),
        LINE("NoDigits", "Desktop Connector running on http://127.0.0.1:", kAbsent),
        LINE("NegativePort", "Desktop Connector running on http://127.0.0.1:-1", kAbsent),
        LINE("TwoBlanks", "Desktop Connector  running on http://127.0.0.1:3000", kAbsent),
        LINE("FirstOfTwo",
             "Desktop Connector running on http://localhost:1 Desktop Connector running on "
             "http://localhost:2",
             1),
        LINE("SecondWhereTheFirstIsNone",
             "Desktop Connector running on http://x Desktop Connector running on "
             "http://localhost:2",
             2),
        LINE("Zero", "Desktop Connector running on http://127.0.0.1:0", 0),
        LINE("LeadingZeros", "Desktop Connector running on http://127.0.0.1:0003001", 3001),
        LINE("Most", "Desktop Connector running on http://127.0.0.1:9223372036854775807",
             9223372036854775807),
        LINE("TooLarge", "Desktop Connector running on http://127.0.0.1:9223372036854775808",
             kAbsent),
        LINE("TooLargeThoughASecondFits",
             "Desktop Connector running on http://localhost:99999999999999999999 Desktop "
             "Connector running on http://localhost:2",
             kAbsent),
        LINE("FullWidthDigits", "Desktop Connector running on http://127.0.0.1:８０", kAbsent),
        LINE("FullWidthAfterAscii", "Desktop Connector running on http://127.0.0.1:80８０",
             kAbsent),
        LINE("ArabicIndicAfterAscii", "Desktop Connector running on http://127.0.0.1:80\u0660",
             kAbsent),
        LINE("DigitsBeyondTheFirstPlane",
             "Desktop Connector running on http://127.0.0.1:80\U0001D7CE", kAbsent),
        LINE("SuperscriptIsNoDigit", "Desktop Connector running on http://127.0.0.1:80\u00B2", 80),
        LINE("WideCharactersBefore", "\U0001F600ü Desktop Connector running on http://127.0.0.1:80",
             80)),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    PortLine, PortAnnouncement,
    testing::Values(
        LINE("Blank", "PORT: 8080", 8080), LINE("NoBlank", "PORT:8080", 8080),
        LINE("Blanks", "PORT:  \t 8080", 8080), LINE("LeadingZero", "PORT: 08080", 8080),
        LINE("Zero", "PORT: 0", 0), LINE("BeyondPorts", "PORT: 99999", 99999),
        LINE("BlanksBefore", "  PORT: 8080", kAbsent), LINE("BlankAfter", "PORT: 8080 ", kAbsent),
        LINE("TextAfter", "PORT: 8080 open", kAbsent), LINE("TextBefore", "The PORT: 80", kAbsent),
        LINE("LowerCase", "port: 8080", kAbsent), LINE("BlankBeforeColon", "PORT : 80", kAbsent),
        LINE("NoNumber", "PORT: ", kAbsent), LINE("Negative", "PORT: -1", kAbsent),
        LINE("Plus", "PORT: +1", kAbsent), LINE("Fraction", "PORT: 80.0", kAbsent),
        LINE("Most", "PORT: 9223372036854775807", 9223372036854775807),
        LINE("TooLarge", "PORT: 9223372036854775808", kAbsent),
        LINE("ManyLeadingZeros", "PORT: 0000000000000000000000000000000000000080", 80),
        LINE("NoBreakSpace", "PORT:\u00A080", 80), LINE("IdeographicSpace", "PORT:\u300080", 80),
        LINE("OghamSpace", "PORT:\u168080", 80), LINE("NarrowNoBreakSpace", "PORT:\u202F80", 80),
        LINE("MongolianVowelSeparator", "PORT:\u180E80", kAbsent),
        LINE("ZeroWidthSpace", "PORT:\u200B80", kAbsent),
        LINE("ByteOrderMark", "\uFEFFPORT: 80", kAbsent),
        LINE("FullWidthDigits", "PORT: ８０", kAbsent),
        LINE("FullWidthAfterAscii", "PORT: 80８０", kAbsent),
        LINE("LineFeedAfter", "PORT: 80\n", kAbsent),
        LINE("SecondOfTwoLines", "x\nPORT: 80", kAbsent), LINE("Empty", "", kAbsent),
        LINE("OtherText", "listening", kAbsent),
        LINE("StartUpLineDecidesFirst", "PORT: Desktop Connector running on http://127.0.0.1:1",
             1)),
    nameOf);

/// The time for one line, which must not grow with the square of its length: a pass over 64 KiB
/// takes well under a millisecond, a quadratic search takes seconds.
std::chrono::milliseconds timeFor(const QString& line) {
    parsePort(QString());
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(parsePort(line), std::nullopt);
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                                 start);
}

TEST(PortAnnouncement, OfHostileLinesIsCheap) {
    constexpr qsizetype kLength = 4 * 1024 * 1024;
    const QString port = QStringLiteral("PORT:");
    const QString prefix = QStringLiteral("Desktop Connector running on http://");
    const std::chrono::milliseconds limit(2000);
    EXPECT_LT(timeFor(QString(kLength, u'x')), limit);
    EXPECT_LT(timeFor(QString(kLength, u'D')), limit);
    EXPECT_LT(timeFor(port + QString(kLength, u' ')), limit);
    EXPECT_LT(timeFor(port + QString(kLength, u'7')), limit);
    EXPECT_LT(timeFor(port + QString(kLength, u'7') + u'x'), limit);
    EXPECT_LT(timeFor(port + QString(kLength, u' ') + QString(kLength, u'7') + u'x'), limit);
    EXPECT_LT(timeFor(prefix.repeated(kLength / prefix.size())), limit);
    EXPECT_LT(timeFor(prefix + QStringLiteral("localhost:") + QString(kLength, u'7')), limit);
}

QStringList texts(std::initializer_list<const char*> lines) {
    QStringList list;
    for (const char* line : lines) {
        list.append(QString::fromUtf8(line));
    }
    return list;
}

TEST(OutputLines, EndAtEveryNewlineCharacter) {
    EXPECT_EQ(outputLines("a\nb\vc\fd\re\xc2\x85"
                          "f\xe2\x80\xa8g\xe2\x80\xa9h"),
              texts({"a", "b", "c", "d", "e", "f", "g", "h"}));
}

TEST(OutputLines, KeepNothingOfACarriageReturn) {
    EXPECT_EQ(outputLines("PORT: 1\r\nPORT: 2\r\n"), texts({"PORT: 1", "PORT: 2"}));
}

TEST(OutputLines, AreNeverEmpty) {
    EXPECT_EQ(outputLines(""), QStringList());
    EXPECT_EQ(outputLines("\n\r\n\n"), QStringList());
    EXPECT_EQ(outputLines("\n\na\n\n\nb\n\n"), texts({"a", "b"}));
}

TEST(OutputLines, MayLackTheirEnd) {
    EXPECT_EQ(outputLines("a"), texts({"a"}));
    EXPECT_EQ(outputLines("a\nb"), texts({"a", "b"}));
}

TEST(OutputLines, KeepBlanksAndOtherControlCharacters) {
    EXPECT_EQ(outputLines("  a\t\n \n\x1c\x1d\x1b[0m"), texts({"  a\t", " ", "\x1c\x1d\x1b[0m"}));
    EXPECT_EQ(outputLines(QByteArray("a\0b", 3)), QStringList(QString::fromLatin1("a\0b", 3)));
}

TEST(OutputLines, ShowReplacementCharactersForBrokenBytes) {
    EXPECT_EQ(outputLines("a\xff"
                          "b\n\x80"
                          "c"),
              texts({"a\xef\xbf\xbd"
                     "b",
                     "\xef\xbf\xbd"
                     "c"}));
    const auto cutAtTheEnd = outputLines("a\xe2\x80");
    ASSERT_EQ(cutAtTheEnd.size(), 1);
    EXPECT_TRUE(cutAtTheEnd[0].startsWith(QStringLiteral("a\uFFFD")));
    const auto cutAtTheStart = outputLines("\xa8z");
    ASSERT_EQ(cutAtTheStart.size(), 1);
    EXPECT_EQ(cutAtTheStart[0], QStringLiteral("\uFFFDz"));
}

TEST(OutputLines, KeepAByteOrderMark) {
    EXPECT_EQ(outputLines("\xef\xbb\xbfPORT: 80"), QStringList(QStringLiteral("\uFEFFPORT: 80")));
}

TEST(OutputLines, AnnounceAfterBrokenBytes) {
    const auto lines = outputLines("\xff Desktop Connector running on http://127.0.0.1:80\xff\n");
    ASSERT_EQ(lines.size(), 1);
    EXPECT_EQ(parsePort(lines[0]), 80);
}

TEST(OutputLines, DoNotAnnounceWhatIsSplitOverTwoChunks) {
    for (const char* chunk : {"Desktop Connector running on http://127.0.", "0.1:52000\n"}) {
        for (const auto& line : outputLines(chunk)) {
            EXPECT_EQ(parsePort(line), std::nullopt) << chunk;
        }
    }
}

} // namespace
} // namespace orvanta
