// SPDX-License-Identifier: MIT
#include "base/json.h"

#include <gtest/gtest.h>

#include <string>

namespace orvanta {
namespace {

struct Document {
    const char* name;
    QByteArray bytes;
};

void PrintTo(const Document& document, std::ostream* stream) {
    *stream << document.name;
}

QByteArray nested(int levels) {
    return "{\"a\":" + QByteArray(levels - 1, '[') + QByteArray(levels - 1, ']') + "}";
}

std::string nameOf(const testing::TestParamInfo<Document>& info) {
    return info.param.name;
}

class ValidDocument : public testing::TestWithParam<Document> {};

TEST_P(ValidDocument, IsRead) {
    EXPECT_NO_THROW(JsonReader::parse(GetParam().bytes));
}

INSTANTIATE_TEST_SUITE_P(
    Json, ValidDocument,
    testing::Values(Document{"EmptyObject", "{}"}, Document{"SpaceAround", " \t\r\n{ }\n"},
                    Document{"SpaceBetween", "{ \"a\" : [ 1 , 2 ] , \"b\" : { } }"},
                    Document{"ByteOrderMark", "\xef\xbb\xbf{}"}, Document{"EmptyKey", "{\"\":1}"},
                    Document{"EmptyArray", "{\"a\":[]}"}, Document{"DeepestNesting", nested(512)},
                    Document{"ManyShallowContainers",
                             "{\"a\":[" + QByteArray("[],").repeated(2000) + "[]]}"},
                    Document{"HugeNumberNobodyAsksFor", "{\"a\":1e400}"},
                    Document{"UnpairedSurrogateNobodyAsksFor", "{\"a\":\"\\ud800\"}"},
                    Document{"NonCharacter", "{\"a\":\"\xef\xbf\xbf\"}"}),
    nameOf);

class InvalidDocument : public testing::TestWithParam<Document> {};

TEST_P(InvalidDocument, IsRefused) {
    EXPECT_THROW(JsonReader::parse(GetParam().bytes), JsonError);
}

INSTANTIATE_TEST_SUITE_P(
    JsonStructure, InvalidDocument,
    testing::Values(
        Document{"Empty", ""}, Document{"OnlySpace", " \n"}, Document{"Null", "null"},
        Document{"TopLevelArray", "[{}]"}, Document{"TopLevelString", "\"a\""},
        Document{"TopLevelNumber", "1"}, Document{"Unclosed", "{\"a\":1"},
        Document{"OnlyOpen", "{"}, Document{"TrailingGarbage", "{} x"},
        Document{"SecondObject", "{}{}"}, Document{"TrailingNul", QByteArray("{}\0", 3)},
        Document{"TrailingComma", "{\"a\":1,}"}, Document{"LeadingComma", "{,}"},
        Document{"TrailingCommaInArray", "{\"a\":[1,]}"}, Document{"MissingColon", "{\"a\" 1}"},
        Document{"MissingComma", "{\"a\":1 \"b\":2}"}, Document{"MissingValue", "{\"a\":}"},
        Document{"KeyWithoutQuotes", "{a:1}"}, Document{"SingleQuotes", "{'a':1}"},
        Document{"NumberAsKey", "{1:1}"}, Document{"CrossedBrackets", "{\"a\":[1}]"},
        Document{"Comment", "{}/**/"}, Document{"VerticalTabAsSpace", "{\v}"},
        Document{"NoBreakSpace", "{\xc2\xa0}"},
        Document{"TwoByteOrderMarks", "\xef\xbb\xbf\xef\xbb\xbf{}"},
        Document{"Utf16", QByteArray("\xff\xfe{\0}\0", 6)}, Document{"TooDeepArrays", nested(513)},
        Document{"MillionsDeep", QByteArray("{\"a\":") + QByteArray(4'000'000, '[')},
        Document{"MillionsDeepObjects", QByteArray("{\"a\":").repeated(1'000'000)}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(JsonText, InvalidDocument,
                         testing::Values(Document{"UnclosedString", "{\"a\":\"x"},
                                         Document{"EndsInEscape", "{\"a\":\"\\"},
                                         Document{"UnknownEscape", "{\"a\":\"\\x\"}"},
                                         Document{"UpperCaseU", "{\"a\":\"\\U0041\"}"},
                                         Document{"ShortHexadecimal", "{\"a\":\"\\u12\"}"},
                                         Document{"WrongHexadecimal", "{\"a\":\"\\u12g4\"}"},
                                         Document{"LineFeedInString", "{\"a\":\"x\ny\"}"},
                                         Document{"TabInString", "{\"a\":\"x\ty\"}"},
                                         Document{"NulInString", QByteArray("{\"a\":\"\0\"}", 9)},
                                         Document{"InvalidUtf8InValue", "{\"a\":\"\xff\"}"},
                                         Document{"InvalidUtf8InUnusedKey", "{\"\xff\":1}"},
                                         Document{"InvalidUtf8InArray", "{\"a\":[\"\x80\"]}"},
                                         Document{"InvalidUtf8AtTheEnd", "{}\xff"},
                                         Document{"CutCharacter", "{\"a\":\"\xc3\"}"},
                                         Document{"CutCharacterAtTheEnd", "{}\xc3"},
                                         Document{"OverlongNul", "{\"a\":\"\xc0\x80\"}"},
                                         Document{"EncodedSurrogate", "{\"a\":\"\xed\xa0\x80\"}"},
                                         Document{"BeyondUnicode", "{\"a\":\"\xf4\x90\x80\x80\"}"}),
                         nameOf);

INSTANTIATE_TEST_SUITE_P(
    JsonNumbersAndLiterals, InvalidDocument,
    testing::Values(
        Document{"LeadingZero", "{\"a\":01}"}, Document{"LeadingPoint", "{\"a\":.5}"},
        Document{"NegativeLeadingPoint", "{\"a\":-.5}"}, Document{"TrailingPoint", "{\"a\":1.}"},
        Document{"PointBeforeExponent", "{\"a\":1.e3}"}, Document{"Plus", "{\"a\":+1}"},
        Document{"OnlyMinus", "{\"a\":-}"}, Document{"MinusSpace", "{\"a\":- 1}"},
        Document{"EmptyExponent", "{\"a\":1e}"}, Document{"SignedEmptyExponent", "{\"a\":1e+}"},
        Document{"TwoExponentSigns", "{\"a\":1e+-1}"}, Document{"Hexadecimal", "{\"a\":0x10}"},
        Document{"NaN", "{\"a\":NaN}"}, Document{"Infinity", "{\"a\":Infinity}"},
        Document{"FullWidthDigit", "{\"a\":\xef\xbc\x98}"}, Document{"CutLiteral", "{\"a\":tru}"},
        Document{"LongLiteral", "{\"a\":truex}"}, Document{"UpperCaseLiteral", "{\"a\":True}"}),
    nameOf);

class WrongPlace : public testing::TestWithParam<std::pair<QByteArray, int>> {};

TEST_P(WrongPlace, IsNamed) {
    const auto& [bytes, character] = GetParam();
    try {
        JsonReader::parse(bytes);
        FAIL() << "nothing was thrown";
    } catch (const JsonError& error) {
        EXPECT_EQ(
            error.description(),
            QStringLiteral("The data is not a valid JSON object (character %1).").arg(character));
        EXPECT_EQ(error.domain(), QStringLiteral("json"));
    }
}

INSTANTIATE_TEST_SUITE_P(Json, WrongPlace,
                         testing::Values(std::pair("{\"a\":x}", 6),
                                         std::pair("{\"a\":\"xy\nz\"}", 10),
                                         std::pair("{\"a\":\"xy", 9),
                                         std::pair("{\"a\":\"xy\\nz\\x\"}", 14)));

TEST(JsonParser, SaysThatTheDataIsNoUtf8) {
    try {
        JsonReader::parse("{}\xff");
        FAIL() << "nothing was thrown";
    } catch (const JsonError& error) {
        EXPECT_EQ(error.description(), QStringLiteral("The data is not valid UTF-8."));
    }
}

} // namespace
} // namespace orvanta
