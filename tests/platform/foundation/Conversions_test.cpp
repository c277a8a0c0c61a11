#include "platform/foundation/Conversions.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace quillomat {
namespace {

constexpr std::int32_t largest = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t smallest = std::numeric_limits<std::int32_t>::min();

TEST(IntValue, readsTheLeadingIntegerOfAText) {
    EXPECT_EQ(intValue("12"), 12);
    EXPECT_EQ(intValue("-12"), -12);
    EXPECT_EQ(intValue("+12"), 12);
    EXPECT_EQ(intValue(" \t\n\r\v\f 7"), 7);
    EXPECT_EQ(intValue("30px"), 30);
    EXPECT_EQ(intValue("007"), 7);
}

TEST(IntValue, dropsTheFractionOfAText) {
    EXPECT_EQ(intValue("37.9"), 37);
    EXPECT_EQ(intValue("-37.9"), -37);
    EXPECT_EQ(intValue(".9"), 0);
    EXPECT_EQ(intValue("1e3"), 1);
}

TEST(IntValue, readsZeroWhereNoDigitsComeFirst) {
    for (const char* text : {"", " ", "-", "+", "x12", "- 5", "--5", "+-5", "NaN",
                             "\xC2\xA0"
                             "5"}) {
        EXPECT_EQ(intValue(text), 0) << '"' << text << '"';
    }
}

TEST(IntValue, saturatesAtThirtyTwoBits) {
    EXPECT_EQ(intValue("2147483647"), largest);
    EXPECT_EQ(intValue("2147483648"), largest);
    EXPECT_EQ(intValue("-2147483648"), smallest);
    EXPECT_EQ(intValue("-2147483649"), smallest);
    EXPECT_EQ(intValue(std::string(100000, '9')), largest);
    EXPECT_EQ(intValue("-" + std::string(100000, '9')), smallest);
    EXPECT_EQ(intValue(Value::integer(std::int64_t{1} << 40)), largest);
    EXPECT_EQ(intValue(Value::integer(std::numeric_limits<std::int64_t>::min())), smallest);
    EXPECT_EQ(intValue(Value::real(1e300)), largest);
    EXPECT_EQ(intValue(Value::real(-1e300)), smallest);
}

TEST(IntValue, dropsTheFractionOfANumber) {
    EXPECT_EQ(intValue(Value::real(12.0)), 12);
    EXPECT_EQ(intValue(Value::real(12.99)), 12);
    EXPECT_EQ(intValue(Value::real(-12.99)), -12);
    EXPECT_EQ(intValue(Value::real(2147483647.9)), largest);
    EXPECT_EQ(intValue(Value::real(std::nan(""))), 0);
}

TEST(IntValue, readsTheSameFromTextAndNumber) {
    EXPECT_EQ(intValue(Value::string("12")), 12);
    EXPECT_EQ(intValue(Value::integer(12)), 12);
    EXPECT_EQ(intValue(Value::real(12.0)), 12);
}

TEST(IntValue, readsZeroFromWhatIsNeitherNumberNorText) {
    EXPECT_EQ(intValue(Value()), 0);
    EXPECT_EQ(intValue(Value::null()), 0);
    EXPECT_EQ(intValue(Value::array({Value::integer(5)})), 0);
    EXPECT_EQ(intValue(Value::object({{"a", Value::integer(5)}})), 0);
    EXPECT_EQ(intValue(Value::boolean(true)), 1);
    EXPECT_EQ(intValue(Value::boolean(false)), 0);
}

TEST(FloatValue, readsTheLeadingNumberOfAText) {
    EXPECT_EQ(floatValue("0.5"), 0.5F);
    EXPECT_EQ(floatValue(" -1.25e2x"), -125.0F);
    EXPECT_EQ(floatValue("+3"), 3.0F);
    EXPECT_EQ(floatValue(".5"), 0.5F);
    EXPECT_EQ(floatValue("5."), 5.0F);
    EXPECT_EQ(floatValue("2e"), 2.0F);
    EXPECT_EQ(floatValue("2e+"), 2.0F);
    EXPECT_EQ(floatValue("0x10"), 0.0F);
    EXPECT_EQ(floatValue("0.1"), 0.1F);
}

TEST(FloatValue, readsZeroWhereThereIsNoNumber) {
    for (const char* text : {"", "-", ".", "e5", "nan", "inf", "infinity", "- 1",
                             "\xE2\x88\x92"
                             "1"}) {
        EXPECT_EQ(floatValue(text), 0.0F) << '"' << text << '"';
    }
    EXPECT_EQ(floatValue(Value()), 0.0F);
    EXPECT_EQ(floatValue(Value::null()), 0.0F);
    EXPECT_EQ(floatValue(Value::array({})), 0.0F);
}

TEST(FloatValue, saturatesInsteadOfBecomingInfinite) {
    constexpr float limit = std::numeric_limits<float>::max();
    EXPECT_EQ(floatValue("1e39"), limit);
    EXPECT_EQ(floatValue("-1e39"), -limit);
    EXPECT_EQ(floatValue("1e99999999999999999999999"), limit);
    EXPECT_EQ(floatValue("1" + std::string(400, '0')), limit);
    EXPECT_EQ(floatValue(Value::real(1e300)), limit);
    EXPECT_EQ(floatValue(Value::real(-1e300)), -limit);
}

TEST(FloatValue, readsWhatIsTooSmallAsZero) {
    EXPECT_EQ(floatValue("1e-99"), 0.0F);
    EXPECT_EQ(floatValue("0." + std::string(400, '0') + "1"), 0.0F);
    EXPECT_EQ(floatValue("123e-99999999999999999999999"), 0.0F);
    EXPECT_EQ(floatValue("0e99999999999999999999999"), 0.0F);
}

TEST(FloatValue, convertsNumbers) {
    EXPECT_EQ(floatValue(Value::integer(7)), 7.0F);
    EXPECT_EQ(floatValue(Value::real(0.25)), 0.25F);
    EXPECT_EQ(floatValue(Value::string("0.75")), 0.75F);
    EXPECT_EQ(floatValue(Value::boolean(true)), 1.0F);
}

TEST(BoolValue, readsTheFirstTellingCharacterOfAText) {
    for (const char* text : {"YES", "yes", "true", "True", "y", "1", "9", " 1", "01", "-1", "+3", "0001x", "2.5"}) {
        EXPECT_TRUE(boolValue(text)) << '"' << text << '"';
    }
    for (const char* text : {"", " ", "0", "00", "false", "no", "NO", "0.5", "-0", "x1", "on", "- 1"}) {
        EXPECT_FALSE(boolValue(text)) << '"' << text << '"';
    }
}

TEST(BoolValue, convertsNumbersAndReadsFalseElsewhere) {
    EXPECT_TRUE(boolValue(Value::boolean(true)));
    EXPECT_FALSE(boolValue(Value::boolean(false)));
    EXPECT_TRUE(boolValue(Value::integer(-1)));
    EXPECT_FALSE(boolValue(Value::integer(0)));
    EXPECT_TRUE(boolValue(Value::real(0.5)));
    EXPECT_FALSE(boolValue(Value::real(0)));
    EXPECT_TRUE(boolValue(Value::string("true")));
    EXPECT_FALSE(boolValue(Value::string("false")));
    EXPECT_FALSE(boolValue(Value()));
    EXPECT_FALSE(boolValue(Value::null()));
    EXPECT_FALSE(boolValue(Value::array({Value::boolean(true)})));
}

TEST(Describe, writesEveryKindAsAFormatWould) {
    EXPECT_EQ(describe(Value::string("as \"it\" is")), "as \"it\" is");
    EXPECT_EQ(describe(Value::integer(-12)), "-12");
    EXPECT_EQ(describe(Value::integer(std::numeric_limits<std::int64_t>::max())), "9223372036854775807");
    EXPECT_EQ(describe(Value::real(12.0)), "12");
    EXPECT_EQ(describe(Value::real(0.1)), "0.1");
    EXPECT_EQ(describe(Value::boolean(true)), "1");
    EXPECT_EQ(describe(Value::boolean(false)), "0");
}

TEST(Describe, tellsAMissingValueFromANull) {
    EXPECT_EQ(describe(Value()), "(null)");
    EXPECT_EQ(describe(Value::null()), "<null>");
}

TEST(Describe, writesContainersOnOneLine) {
    EXPECT_EQ(describe(Value::object({{"a", Value::array({Value::integer(1), Value::string("x")})}})),
              R"({"a": [1, "x"]})");
}

TEST(NumberText, writesPlainDigitsWhereTheyAreReadable) {
    EXPECT_EQ(numberText(0), "0");
    EXPECT_EQ(numberText(300), "300");
    EXPECT_EQ(numberText(100000), "100000");
    EXPECT_EQ(numberText(-12.5), "-12.5");
    EXPECT_EQ(numberText(0.0001), "0.0001");
    EXPECT_EQ(numberText(1e25), "1e+25");
    EXPECT_EQ(numberText(1e-7), "1e-07");
}

TEST(NumberText, readsBackAsTheSameNumber) {
    std::mt19937_64 random(7);
    std::uniform_real_distribution<double> exponent(-300, 300);
    for (int i = 0; i < 10000; ++i) {
        const double number = std::pow(10.0, exponent(random)) * (i % 2 == 0 ? 1 : -1);
        EXPECT_EQ(std::stod(numberText(number)), number);
    }
}

TEST(ReplaceAll, replacesEveryOccurrence) {
    EXPECT_EQ(replaceAll("a.cfg.cfg", ".cfg", ".png"), "a.png.png");
    EXPECT_EQ(replaceAll("x.cfg.bak", ".cfg", ".png"), "x.png.bak");
    EXPECT_EQ(replaceAll("phone-large.png", "-large", ""), "phone.png");
    EXPECT_EQ(replaceAll("nothing", "-large", ""), "nothing");
    EXPECT_EQ(replaceAll("", "a", "b"), "");
}

TEST(ReplaceAll, doesNotLookAtTheResultAgain) {
    EXPECT_EQ(replaceAll("-la-largerge", "-large", ""), "-large");
    EXPECT_EQ(replaceAll("aaa", "a", "aa"), "aaaaaa");
    EXPECT_EQ(replaceAll("aaa", "aa", "b"), "ba");
}

TEST(ReplaceAll, leavesTheTextWhenThereIsNothingToLookFor) {
    EXPECT_EQ(replaceAll("text", "", "x"), "text");
}

} // namespace
} // namespace quillomat
