#include "platform/foundation/Value.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <limits>

namespace quillomat {
namespace {

Value parsed(std::string_view text) {
    auto result = parseJson(text);
    EXPECT_TRUE(result) << text << ": " << (result ? "" : result.reason());
    return result ? *result : Value();
}

std::string refusal(std::string_view text, const JsonLimits& limits = {}) {
    const auto result = parseJson(text, limits);
    EXPECT_FALSE(result) << text.substr(0, 60);
    return result ? "accepted" : result.reason();
}

TEST(Value, keepsTheOrderOfTheDocument) {
    const Value value = parsed(R"({"zebra": 1, "apple": 2, "mango": 3})");
    ASSERT_EQ(value.count(), 3U);
    EXPECT_EQ(value.members()[0].first, "zebra");
    EXPECT_EQ(value.members()[1].first, "apple");
    EXPECT_EQ(value.members()[2].first, "mango");
}

TEST(Value, ofDuplicateKeysTheLastWinsAtTheFirstsPlace) {
    const Value value = parsed(R"({"a": 1, "b": 2, "a": 3, "c": 4, "a": 5})");
    EXPECT_EQ(writeJson(value, JsonStyle::compact), R"({"a": 5, "b": 2, "c": 4})");
}

TEST(Value, findsEveryMemberOfALargeObject) {
    Value::Object members;
    for (int i = 0; i < 1000; ++i) {
        members.emplace_back("key" + std::to_string((i * 7919) % 1000), Value::integer(i));
    }
    members.emplace_back("key0", Value::string("last"));
    const Value value = Value::object(members);
    ASSERT_EQ(value.count(), 1000U);
    EXPECT_EQ(value["key0"].stringValue(), "last");
    EXPECT_EQ(value.members()[0].first, "key0");
    for (int i = 1; i < 1000; ++i) {
        EXPECT_EQ(value["key" + std::to_string((i * 7919) % 1000)].integerValue(), i);
    }
    EXPECT_FALSE(value.contains("key1000"));
    EXPECT_FALSE(value.contains(""));
}

TEST(Value, manyDuplicateKeysAreNoSlowerThanManyKeys) {
    std::string text = "{";
    for (int i = 0; i < 300000; ++i) {
        text += R"("same":1,)";
    }
    text += R"("same":2})";
    const auto start = std::chrono::steady_clock::now();
    const Value value = parsed(text);
    EXPECT_EQ(value.count(), 1U);
    EXPECT_EQ(value["same"].integerValue(), 2);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

TEST(Value, aNullIsPresentAndAMissingKeyIsNot) {
    const Value value = parsed(R"({"null": null})");
    EXPECT_TRUE(value.contains("null"));
    EXPECT_EQ(value["null"].kind(), Value::Kind::null);
    EXPECT_FALSE(value.contains("other"));
    EXPECT_EQ(value["other"].kind(), Value::Kind::nothing);
    EXPECT_NE(value["null"], value["other"]);
}

TEST(Value, lookUpsInTheWrongKindGiveNothing) {
    const Value value = parsed(R"({"text": "x", "list": [1]})");
    EXPECT_FALSE(value["text"]["deeper"].at(3)["still"].isPresent());
    EXPECT_FALSE(value["list"]["0"].isPresent());
    EXPECT_FALSE(value["list"].at(1).isPresent());
    EXPECT_FALSE(value.at(0).isPresent());
    EXPECT_EQ(value["list"].stringValue(), "");
    EXPECT_EQ(value["text"].integerValue(), 0);
    EXPECT_EQ(value["text"].count(), 0U);
    EXPECT_TRUE(value["text"].elements().empty());
    EXPECT_TRUE(value["list"].members().empty());
    EXPECT_FALSE(Value().booleanValue());
}

TEST(Value, keepsTheKindsOfTheDocument) {
    const Value value = parsed(R"([1, 1.0, "1", true, false, null, [], {}])");
    using Kind = Value::Kind;
    const Kind kinds[] = {Kind::integer, Kind::real, Kind::string, Kind::boolean,
                          Kind::boolean, Kind::null, Kind::array,  Kind::object};
    ASSERT_EQ(value.count(), std::size(kinds));
    for (std::size_t i = 0; i < std::size(kinds); ++i) {
        EXPECT_EQ(value.at(i).kind(), kinds[i]) << i;
    }
    EXPECT_EQ(value.at(1).realValue(), 1.0);
    EXPECT_EQ(value.at(0).realValue(), 1.0);
    EXPECT_TRUE(value.at(3).booleanValue());
}

TEST(Value, integersBeyondSixtyFourBitsBecomeReal) {
    const Value value =
        parsed("[9223372036854775807, -9223372036854775808, 9223372036854775808, 18446744073709551616]");
    EXPECT_EQ(value.at(0).integerValue(), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(value.at(1).integerValue(), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(value.at(2).kind(), Value::Kind::real);
    EXPECT_EQ(value.at(2).realValue(), 9223372036854775808.0);
    EXPECT_EQ(value.at(3).realValue(), 18446744073709551616.0);
}

TEST(Value, withMemberReplacesInPlaceOrAppends) {
    const Value value = parsed(R"({"a": 1, "b": 2})");
    EXPECT_EQ(writeJson(value.withMember("a", Value::integer(9)), JsonStyle::compact), R"({"a": 9, "b": 2})");
    EXPECT_EQ(writeJson(value.withMember("c", Value::null()), JsonStyle::compact), R"({"a": 1, "b": 2, "c": null})");
    EXPECT_EQ(writeJson(value, JsonStyle::compact), R"({"a": 1, "b": 2})");
    EXPECT_EQ(writeJson(Value().withMember("a", Value::integer(1)), JsonStyle::compact), R"({"a": 1})");
    EXPECT_EQ(writeJson(Value::string("x").withMember("a", Value::integer(1)), JsonStyle::compact), R"({"a": 1})");
}

TEST(Value, withElementAppends) {
    EXPECT_EQ(writeJson(parsed("[1]").withElement(Value::integer(2)), JsonStyle::compact), "[1, 2]");
    EXPECT_EQ(writeJson(Value().withElement(Value::integer(2)), JsonStyle::compact), "[2]");
}

TEST(Value, comparesByContentWhateverTheOrderOfKeys) {
    EXPECT_EQ(parsed(R"({"a": [1, "x"], "b": null})"), parsed(R"({"b": null, "a": [1, "x"]})"));
    EXPECT_NE(parsed(R"({"a": 1})"), parsed(R"({"a": 1, "b": 2})"));
    EXPECT_NE(parsed(R"({"a": 1})"), parsed(R"({"b": 1})"));
    EXPECT_NE(parsed("[1, 2]"), parsed("[2, 1]"));
    EXPECT_NE(parsed("[1]"), parsed("[1.0]"));
    EXPECT_NE(parsed("[true]"), parsed("[false]"));
    EXPECT_NE(parsed("[0.5]"), parsed("[0.25]"));
    EXPECT_EQ(Value(), Value());
}

TEST(ParseJson, acceptsAByteOrderMark) {
    EXPECT_EQ(parsed("\xEF\xBB\xBF{\"a\": 1}")["a"].integerValue(), 1);
    refusal("\xEF\xBB{}");
}

TEST(ParseJson, theTopLevelMustBeAnObjectOrAnArray) {
    for (const char* text : {"1", "\"text\"", "null", "true", "1.5"}) {
        EXPECT_EQ(refusal(text), "line 1: neither an object nor an array") << text;
    }
    EXPECT_EQ(parsed(" [] ").count(), 0U);
    EXPECT_EQ(parsed("\n{}\n").count(), 0U);
}

TEST(ParseJson, refusesWhatIsNotJson) {
    for (const char* text : {"",
                             " ",
                             "{",
                             "[",
                             "]",
                             "{]",
                             "[1,]",
                             "{\"a\":1,}",
                             "[1 2]",
                             "{a:1}",
                             "{'a':1}",
                             "[01]",
                             "[+1]",
                             "[.5]",
                             "[1.]",
                             "[1e]",
                             "[NaN]",
                             "[nan]",
                             "[Infinity]",
                             "[-Infinity]",
                             "[-]",
                             "[0x1]",
                             "[tru]",
                             "[True]",
                             "// comment\n[]",
                             "[/* comment */]",
                             "[] []",
                             "[]x",
                             "{\"a\"}",
                             "{\"a\":}",
                             "{\"a\" 1}",
                             "{1:1}",
                             "[\"a]",
                             "[\"\\x\"]",
                             "[\"\\u12\"]",
                             "[\"tab\there\"]",
                             "[\"line\nbreak\"]",
                             "<html></html>"}) {
        EXPECT_NE(refusal(text), "") << text;
    }
}

TEST(ParseJson, aLoneNanOrInfinityIsRefused) {
    for (const char* text : {"NaN", "Infinity", "-Infinity", "nan"}) {
        refusal(text);
    }
}

TEST(ParseJson, refusesNumbersThatNoDoubleHolds) {
    EXPECT_EQ(refusal("[1e999]"), "a number is too large");
    EXPECT_EQ(refusal("[-1e999]"), "a number is too large");
    EXPECT_EQ(parsed("[1e-999]").at(0).realValue(), 0);
}

TEST(ParseJson, refusesInvalidUtf8) {
    for (const char* text :
         {"[\"\xFF\"]", "[\"\xC0\xAF\"]", "[\"\xED\xA0\x80\"]", "[\"\xF5\x80\x80\x80\"]", "[\"\xE2\x82\"]",
          "[\"\x80\"]", "[\"\\uD800\"]", "[\"\\uDC00\"]", "[\"\\uD800\\u0041\"]"}) {
        refusal(text);
    }
    EXPECT_EQ(parsed(R"(["\uD83D\uDCF1 é"])").at(0).stringValue(), "\xF0\x9F\x93\xB1 \xC3\xA9");
}

TEST(ParseJson, refusesANulByteAnywhere) {
    EXPECT_EQ(refusal(std::string_view("{}\0garbage", 10)), "byte 3 is NUL");
    EXPECT_EQ(refusal(std::string_view("[\"a\0b\"]", 7)), "byte 4 is NUL");
    EXPECT_EQ(parsed(R"(["a\u0000b"])").at(0).stringValue(), std::string("a\0b", 3));
}

TEST(ParseJson, refusesAHundredThousandBrackets) {
    EXPECT_EQ(refusal(std::string(100000, '[')), "nested deeper than 512 levels");
    EXPECT_EQ(refusal(std::string(100000, '[') + std::string(100000, ']')), "nested deeper than 512 levels");
    std::string objects;
    for (int i = 0; i < 100000; ++i) {
        objects += "{\"a\":";
    }
    EXPECT_EQ(refusal(objects), "nested deeper than 512 levels");
    refusal(std::string(100000, ']'));
}

TEST(ParseJson, readsADocumentAsDeepAsTheLimit) {
    const std::string text = std::string(512, '[') + std::string(512, ']');
    EXPECT_EQ(writeJson(parsed(text), JsonStyle::compact), text);
    refusal("[" + text + "]");
}

TEST(ParseJson, refusesADocumentOfTooManyBytesOrValues) {
    EXPECT_EQ(refusal("[1, 2, 3]", {.bytes = 8}), "larger than 8 bytes");
    EXPECT_EQ(refusal("[1, 2, 3]", {.values = 3}), "more than 3 values");
    EXPECT_TRUE(parseJson("[1, 2, 3]", {.bytes = 9, .values = 4}));
    std::string zeros = "[0";
    for (int i = 0; i < 2'000'000; ++i) {
        zeros += ",0";
    }
    EXPECT_EQ(refusal(zeros + "]"), "more than 2000000 values");
}

TEST(ParseJson, theReasonNamesThePlaceOnOneLine) {
    const std::string reason = refusal("{\n  \"a\": \x01\xFF\n}");
    EXPECT_TRUE(reason.starts_with("line 2, column 8: syntax error")) << reason;
    EXPECT_EQ(reason.find('\n'), std::string::npos);
    EXPECT_EQ(reason.find("json.exception"), std::string::npos);
    EXPECT_EQ(reason.find('\xFF'), std::string::npos);
}

TEST(ParseJson, readsBytesAsItReadsText) {
    const std::string text = R"({"a": [1]})";
    const auto result = parseJson(std::as_bytes(std::span(text)));
    ASSERT_TRUE(result);
    EXPECT_EQ(*result, parsed(text));
    EXPECT_FALSE(parseJson(std::span<const std::byte>()));
}

TEST(WriteJson, indentsByTwoWithAFinalLineFeed) {
    EXPECT_EQ(writeJson(parsed(R"({"a":[1,{"b":null}],"c":{},"d":[],"e":1.0})")), R"({
  "a": [
    1,
    {
      "b": null
    }
  ],
  "c": {},
  "d": [],
  "e": 1.0
}
)");
}

TEST(WriteJson, escapesWhatJsonEscapes) {
    EXPECT_EQ(writeJson(Value::string("a\"\\\n\x01\xC3\xA9/"), JsonStyle::compact), "\"a\\\"\\\\\\n\\u0001\xC3\xA9/\"");
}

TEST(WriteJson, writesSomethingReadableForWhatJsonHasNotGot) {
    EXPECT_EQ(writeJson(Value::array({Value(), Value::real(HUGE_VAL), Value::string("\xFF")}), JsonStyle::compact),
              "[null, null, \"\xEF\xBF\xBD\"]");
}

TEST(WriteJson, readsBackAsItWas) {
    const Value value = parsed(
        R"({"text": "\u0000\t\u00e9\ud83d\udcf1", "numbers": [0, -1, 0.1, 1e300, 5e-324, 9223372036854775807, 1e20]})");
    EXPECT_EQ(parsed(writeJson(value)), value);
    EXPECT_EQ(parsed(writeJson(value, JsonStyle::compact)), value);
}

} // namespace
} // namespace quillomat
