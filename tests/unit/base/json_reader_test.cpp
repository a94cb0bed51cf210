// SPDX-License-Identifier: MIT
#include "base/json.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace orvanta {
namespace {

JsonReader readerOf(const QByteArray& value) {
    return JsonReader::parse("{\"a\":" + value + "}");
}

template <typename Read>
QString failureOf(const Read& read) {
    try {
        read();
    } catch (const JsonError& error) {
        return error.description();
    }
    return QStringLiteral("nothing was thrown");
}

struct IntegerCase {
    const char* name;
    const char* text;
    std::optional<std::int64_t> expected;
};

void PrintTo(const IntegerCase& c, std::ostream* stream) {
    *stream << c.text;
}

class JsonInteger : public testing::TestWithParam<IntegerCase> {};

TEST_P(JsonInteger, IsReadExactlyOrRefused) {
    const auto reader = readerOf(GetParam().text);
    if (GetParam().expected) {
        EXPECT_EQ(reader.integer("a"), GetParam().expected);
    } else {
        EXPECT_EQ(failureOf([&] { reader.integer("a"); }),
                  QStringLiteral("The value of “a” is not an integer."));
    }
}

constexpr auto kMost = std::numeric_limits<std::int64_t>::max();
constexpr auto kLeast = std::numeric_limits<std::int64_t>::min();
constexpr std::nullopt_t kRefused = std::nullopt;

INSTANTIATE_TEST_SUITE_P(
    Integers, JsonInteger,
    testing::Values(
        IntegerCase{"Zero", "0", 0}, IntegerCase{"MinusZero", "-0", 0},
        IntegerCase{"ZeroPointZero", "0.00", 0}, IntegerCase{"Plain", "3001", 3001},
        IntegerCase{"Negative", "-3001", -3001}, IntegerCase{"ZeroFraction", "3001.0", 3001},
        IntegerCase{"Exponent", "3e3", 3000}, IntegerCase{"UpperCaseExponent", "3E+3", 3000},
        IntegerCase{"FractionMadeWhole", "30.01e2", 3001},
        IntegerCase{"NegativeExponentMadeWhole", "3001000e-3", 3001},
        IntegerCase{"ZeroWithExponent", "0e400", 0},
        IntegerCase{"ZeroWithEndlessExponent", "0e99999999999", 0},
        IntegerCase{"NegativeZeroWithEndlessExponent", "-0.0e-99999999999", 0},
        IntegerCase{"LeadingFractionZeros", "0.0003001e7", 3001},
        IntegerCase{"Fraction", "3001.5", kRefused},
        IntegerCase{"TinyFraction", "1e-400", kRefused},
        IntegerCase{"FractionBelowDoublePrecision", "1.00000000000000000000001", kRefused},
        IntegerCase{"Most", "9223372036854775807", kMost},
        IntegerCase{"MostPlusOne", "9223372036854775808", kRefused},
        IntegerCase{"MostWithZeroFraction", "9223372036854775807.0", kMost},
        IntegerCase{"MostPlusOneWithZeroFraction", "9223372036854775808.0", kRefused},
        IntegerCase{"Least", "-9223372036854775808", kLeast},
        IntegerCase{"LeastMinusOne", "-9223372036854775809", kRefused},
        IntegerCase{"LeastWithExponent", "-9223372036854775808e0", kLeast},
        IntegerCase{"BeyondDoublePrecision", "9007199254740993", 9007199254740993},
        IntegerCase{"BeyondDoublePrecisionWithFraction", "9007199254740993.0", 9007199254740993},
        IntegerCase{"NineteenDigitsByExponent", "9e18", 9'000'000'000'000'000'000},
        IntegerCase{"TwentyDigitsByExponent", "1e19", kRefused},
        IntegerCase{"TooLargeForDouble", "1e400", kRefused},
        IntegerCase{"ExponentBeyondMachineInteger", "1e99999999999999999999", kRefused},
        IntegerCase{"True", "true", kRefused}, IntegerCase{"String", "\"3001\"", kRefused},
        IntegerCase{"Array", "[1]", kRefused}, IntegerCase{"Object", "{}", kRefused}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(JsonInteger, WithThousandsOfDigitsIsCheap) {
    const QByteArray zeros(1'000'000, '0');
    EXPECT_EQ(readerOf("7." + zeros).integer("a"), 7);
    EXPECT_THROW(readerOf("7" + zeros).integer("a"), JsonError);
    EXPECT_EQ(readerOf("0." + zeros + "7e1000001").integer("a"), 7);
}

struct NumberCase {
    const char* name;
    const char* text;
    double expected;
};

void PrintTo(const NumberCase& c, std::ostream* stream) {
    *stream << c.text;
}

class JsonNumberRead : public testing::TestWithParam<NumberCase> {};

TEST_P(JsonNumberRead, IsTheNearestDouble) {
    EXPECT_EQ(readerOf(GetParam().text).number("a"), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Numbers, JsonNumberRead,
    testing::Values(NumberCase{"Integer", "5", 5.0}, NumberCase{"Fraction", "0.1", 0.1},
                    NumberCase{"Negative", "-2.5e-3", -0.0025},
                    NumberCase{"Largest", "1.7976931348623157e308", 1.7976931348623157e308},
                    NumberCase{"Underflow", "1e-400", 0.0},
                    NumberCase{"BeyondIntegers", "9223372036854775808", 9223372036854775808.0}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(JsonNumberRead, ThatOverflowsFails) {
    const auto expected = QStringLiteral("The value of “a” is out of range.");
    EXPECT_EQ(failureOf([] { readerOf("1e400").number("a"); }), expected);
    EXPECT_EQ(failureOf([] { readerOf("-1e400").number("a"); }), expected);
    EXPECT_EQ(failureOf([] { readerOf(QByteArray(400, '9')).number("a"); }), expected);
}

TEST(JsonNumberRead, IsNoOtherType) {
    for (const char* value : {"true", "\"5\"", "[]", "{}"}) {
        EXPECT_EQ(failureOf([&] { readerOf(value).number("a"); }),
                  QStringLiteral("The value of “a” is not a number."))
            << value;
    }
}

TEST(JsonBoolean, IsReadAndNothingElseIsOne) {
    EXPECT_EQ(readerOf("true").boolean("a"), true);
    EXPECT_EQ(readerOf("false").boolean("a"), false);
    for (const char* value : {"1", "0", "\"true\"", "[]", "{}"}) {
        EXPECT_EQ(failureOf([&] { readerOf(value).boolean("a"); }),
                  QStringLiteral("The value of “a” is not true or false."))
            << value;
    }
}

TEST(JsonString, IsReadWithItsEscapes) {
    EXPECT_EQ(readerOf("\"\"").string("a"), QString());
    EXPECT_EQ(readerOf("\"\xc3\xbc \xf0\x9f\x98\x80\"").string("a"), QStringLiteral("ü 😀"));
    EXPECT_EQ(readerOf(R"("\"\\\/\b\f\n\r\t")").string("a"), QStringLiteral("\"\\/\b\f\n\r\t"));
    EXPECT_EQ(readerOf(R"("\u00fc\u00DF\ud83d\uDE00")").string("a"), QStringLiteral("üß😀"));
    EXPECT_EQ(readerOf(R"("x\u0000y")").string("a")->size(), 3);
}

TEST(JsonString, WithUnpairedSurrogateFails) {
    for (const char* value :
         {R"("\ud800")", R"("\udc00")", R"("\udc00\ud800")", R"("\ud83dx\ude00")"}) {
        EXPECT_EQ(failureOf([&] { readerOf(value).string("a"); }),
                  QStringLiteral("The value of “a” is not valid text."))
            << value;
    }
}

TEST(JsonString, IsNoOtherType) {
    for (const char* value : {"1", "true", "[]", "{}"}) {
        EXPECT_EQ(failureOf([&] { readerOf(value).string("a"); }),
                  QStringLiteral("The value of “a” is not a string."))
            << value;
    }
}

TEST(JsonObjectRead, GivesItsMembers) {
    const auto inner = JsonReader::parse(R"({"a":{"port":3001,"b":{"x":"y"}}})").object("a");
    ASSERT_TRUE(inner.has_value());
    EXPECT_EQ(inner->integer("port"), 3001);
    EXPECT_EQ(inner->object("b")->string("x"), QStringLiteral("y"));
}

TEST(JsonObjectRead, IsNoOtherType) {
    for (const char* value : {"1", "true", "[]", "\"{}\""}) {
        EXPECT_EQ(failureOf([&] { readerOf(value).object("a"); }),
                  QStringLiteral("The value of “a” is not an object."))
            << value;
    }
}

TEST(JsonMember, AbsentOrNullIsNothing) {
    for (const char* document : {"{}", "{\"a\":null}", "{\"A\":1}", "{\"a \":1}"}) {
        const auto reader = JsonReader::parse(document);
        EXPECT_FALSE(reader.string("a").has_value()) << document;
        EXPECT_FALSE(reader.boolean("a").has_value()) << document;
        EXPECT_FALSE(reader.number("a").has_value()) << document;
        EXPECT_FALSE(reader.integer("a").has_value()) << document;
        EXPECT_FALSE(reader.object("a").has_value()) << document;
        EXPECT_EQ(failureOf([&] { reader.requiredString("a"); }),
                  QStringLiteral("The value of “a” is missing."))
            << document;
    }
}

TEST(JsonMember, RequiredStringIsReadOrOfTheWrongType) {
    EXPECT_EQ(readerOf("\"x\"").requiredString("a"), QStringLiteral("x"));
    EXPECT_EQ(readerOf("\"\"").requiredString("a"), QString());
    EXPECT_EQ(failureOf([] { readerOf("1").requiredString("a"); }),
              QStringLiteral("The value of “a” is not a string."));
}

TEST(JsonMember, ThatStandsTwiceCountsOnceFromTheEnd) {
    EXPECT_EQ(JsonReader::parse(R"({"a":"x","a":2})").integer("a"), 2);
    EXPECT_EQ(JsonReader::parse(R"({"a":1,"\u0061":2})").integer("a"), 2);
}

TEST(JsonMember, NobodyAsksForMayBeAnything) {
    const auto reader = JsonReader::parse(R"({"other":[1,{"a":2}],"a":1,"x":{"a":3}})");
    EXPECT_EQ(reader.integer("a"), 1);
}

} // namespace
} // namespace orvanta
