// SPDX-License-Identifier: MIT
#include "base/json_writer.h"

#include "base/json.h"

#include <gtest/gtest.h>

namespace orvanta {
namespace {

TEST(JsonWriter, WritesOneSortedMemberPerLine) {
    JsonWriter json;
    json.add("beta", QStringLiteral("1"));
    json.add("Zeta", std::optional<bool>(true));
    json.add("alpha", std::optional<bool>(false));
    EXPECT_EQ(json.encode(), QByteArray("{\n"
                                        "  \"Zeta\" : true,\n"
                                        "  \"alpha\" : false,\n"
                                        "  \"beta\" : \"1\"\n"
                                        "}"));
}

TEST(JsonWriter, LeavesOutMembersWithoutValue) {
    JsonWriter json;
    json.add("a", std::optional<QString>());
    json.add("b", std::optional<bool>());
    json.add("c", std::optional<QString>(QString()));
    EXPECT_EQ(json.encode(), QByteArray("{\n  \"c\" : \"\"\n}"));
}

TEST(JsonWriter, EscapesWhatJsonAsksForAndSlashes) {
    JsonWriter json;
    json.add("a", QStringLiteral("q\" b\\ s/ \b\f\n\r\t\u0001\u001f\u007f ü😀"));
    EXPECT_EQ(json.encode(),
              QByteArray("{\n  \"a\" : \"q\\\" b\\\\ s\\/ \\b\\f\\n\\r\\t\\u0001\\u001f\x7f "
                         "\xc3\xbc\xf0\x9f\x98\x80\"\n}"));
}

TEST(JsonWriter, IsUnderstoodByTheReader) {
    QString everyUnit;
    for (char16_t unit = 0; unit < 0xD800; ++unit) {
        everyUnit += QChar(unit);
    }
    JsonWriter json;
    json.add("a", everyUnit);
    EXPECT_EQ(JsonReader::parse(json.encode()).string("a"), everyUnit);
}

} // namespace
} // namespace orvanta
