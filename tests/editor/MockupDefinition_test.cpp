#include "editor/MockupDefinition.h"

#include "platform/foundation/Conversions.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

using namespace quillomat;

namespace {

Value json(std::string_view text) {
    return parseJson(text).value();
}

const std::string fullImport = R"({"left_top_x": 100, "left_top_y": "37.9", "right_top_x": 500.8, "right_top_y": 40,
    "left_bottom_x": 90, "left_bottom_y": 900, "right_bottom_x": 510, "right_bottom_y": 910,
    "template_width": 600, "template_height": "1000", "corner_radius": 24, "author": "Ada"})";

TEST(MockupDefinition, textNumberAndFractionReadAsTheSameInteger) {
    for (const char* record :
         {R"({"k": "12"})", R"({"k": 12})", R"({"k": 12.0})", R"({"k": 12.9})", R"({"k": " 12px"})"})
        EXPECT_EQ(MockupDefinition(json(record)).integer("k"), 12) << record;
}

TEST(MockupDefinition, absentNullAndWrongTypesReadZeroAndFalse) {
    const MockupDefinition record(json(R"({"n": null, "a": [1], "o": {"x": 1}})"));
    for (const char* key : {"absent", "n", "a", "o"}) {
        EXPECT_EQ(record.integer(key), 0) << key;
        EXPECT_FALSE(record.boolean(key)) << key;
        EXPECT_EQ(record.text(key), "") << key;
    }
    EXPECT_FALSE(record.isPresent("absent"));
    EXPECT_TRUE(record.isPresent("n")) << "a null is present";
}

TEST(MockupDefinition, recordThatIsNoObjectHasNoKeys) {
    EXPECT_EQ(MockupDefinition(json("[1, 2]")).integer("finalFrameWidth"), 0);
    EXPECT_FALSE(MockupDefinition().hasCreator());
    EXPECT_EQ(MockupDefinition().canvasSize(), (Size{0, 0}));
}

TEST(MockupDefinition, enormousAndNegativeNumbersPassThroughSaturated) {
    const MockupDefinition record(json(R"({"finalFrameWidth": 1e300, "finalFrameHeight": -99999999999})"));
    EXPECT_EQ(record.canvasSize(), (Size{2147483647.0, -2147483648.0}));
}

TEST(MockupDefinition, radiusIsThirtyWhenAbsentAndZeroWhenZeroOrNullStandsThere) {
    EXPECT_EQ(MockupDefinition(json("{}")).renderCornerRadius(), 30);
    EXPECT_EQ(MockupDefinition(json(R"({"cornerRadius": 0})")).renderCornerRadius(), 0);
    EXPECT_EQ(MockupDefinition(json(R"({"cornerRadius": null})")).renderCornerRadius(), 0);
    EXPECT_EQ(MockupDefinition(json(R"({"cornerRadius": "12.9"})")).renderCornerRadius(), 12);
}

TEST(MockupDefinition, cornerKeysAreCodeNameAndSide) {
    const MockupDefinition record(json(R"({"topLeftX": 1, "FtopLeftX": 2, "topLeftX2": 3, "FbottomRightY2": 4})"));
    EXPECT_EQ(record.storedCorners("", "").topLeft.x, 1);
    EXPECT_EQ(record.storedCorners("F", "").topLeft.x, 2);
    EXPECT_EQ(record.storedCorners("", "2").topLeft.x, 3);
    EXPECT_EQ(record.storedCorners("F", "2").bottomRight.y, 4);
    EXPECT_EQ(record.storedCorners("F", "2").topLeft.x, 0);
}

TEST(ImportedDefinition, fullResolutionCornersBecomeTextLoweredByTen) {
    const Value record = definitionFromImport(json(fullImport));
    EXPECT_EQ(record["FtopLeftX"], Value::string("90"));
    EXPECT_EQ(record["FtopLeftY"], Value::string("27"));
    EXPECT_EQ(record["FtopRightX"], Value::string("490"));
    EXPECT_EQ(record["FtopRightY"], Value::string("30"));
    EXPECT_EQ(record["FbottomLeftX"], Value::string("80"));
    EXPECT_EQ(record["FbottomLeftY"], Value::string("890"));
    EXPECT_EQ(record["FbottomRightX"], Value::string("500"));
    EXPECT_EQ(record["FbottomRightY"], Value::string("900"));
}

TEST(ImportedDefinition, previewCornersKeepValueAndTypeUnshiftedAndUnscaledOnPurpose) {
    const Value record = definitionFromImport(json(fullImport));
    EXPECT_EQ(record["topLeftX"], Value::integer(100));
    EXPECT_EQ(record["topLeftY"], Value::string("37.9"));
    EXPECT_EQ(record["topRightX"], Value::real(500.8));
    EXPECT_EQ(record["bottomRightY"], Value::integer(910));
}

TEST(ImportedDefinition, templateSizeIsFrameCanvasAndGlare) {
    const Value record = definitionFromImport(json(fullImport));
    for (const char* key : {"frameWidth", "finalFrameWidth", "glareWidth"})
        EXPECT_EQ(record[key], Value::integer(600)) << key;
    for (const char* key : {"frameHeight", "finalFrameHeight", "glareHeight"})
        EXPECT_EQ(record[key], Value::string("1000")) << key;
}

TEST(ImportedDefinition, constantsAreText) {
    const Value record = definitionFromImport(json(fullImport));
    EXPECT_EQ(record["overlay"], Value::string(""));
    EXPECT_EQ(record["glareX"], Value::string("0"));
    EXPECT_EQ(record["glareY"], Value::string("0"));
    EXPECT_EQ(record["doubleImage"], Value::string("false"));
    EXPECT_EQ(record["customTransform"], Value::string("false"));
    EXPECT_FALSE(MockupDefinition(record).hasSecondScreen());
}

TEST(ImportedDefinition, creditBeginsWithABlank) {
    EXPECT_EQ(definitionFromImport(json(fullImport))["creator"], Value::string(" Mockup created by Ada"));
    EXPECT_EQ(definitionFromImport(json(R"({"author": 7})"))["creator"], Value::string(" Mockup created by 7"));
    EXPECT_EQ(definitionFromImport(json(R"({"author": null})"))["creator"], Value::string(" Mockup created by <null>"));
}

TEST(ImportedDefinition, cornerRadiusIsPassedOnOrTheTextTen) {
    EXPECT_EQ(definitionFromImport(json(fullImport))["cornerRadius"], Value::integer(24));
    EXPECT_EQ(definitionFromImport(json("{}"))["cornerRadius"], Value::string("10"));
    EXPECT_EQ(MockupDefinition(definitionFromImport(json(R"({"corner_radius": null})"))).renderCornerRadius(), 0);
}

TEST(ImportedDefinition, unreadableFileStillGivesARecord) {
    for (const Value& unreadable : {Value(), json("[1]")}) {
        const Value record = definitionFromImport(unreadable);
        for (const char* key : {"FtopLeftX", "FtopLeftY", "FtopRightX", "FtopRightY", "FbottomLeftX", "FbottomLeftY",
                                "FbottomRightX", "FbottomRightY"})
            EXPECT_EQ(record[key], Value::string("-10")) << key;
        EXPECT_EQ(record["cornerRadius"], Value::string("10"));
        for (const char* key : {"topLeftX", "topLeftY", "topRightX", "topRightY", "bottomLeftX", "bottomLeftY",
                                "bottomRightX", "bottomRightY", "frameWidth", "finalFrameWidth", "glareWidth",
                                "frameHeight", "finalFrameHeight", "glareHeight", "creator"})
            EXPECT_FALSE(record.contains(key)) << key;
    }
}

TEST(ImportedDefinition, loweringSaturatesAtThirtyTwoBits) {
    EXPECT_EQ(definitionFromImport(json(R"({"left_top_x": -2147483648})"))["FtopLeftX"], Value::string("-2147483648"));
    EXPECT_EQ(definitionFromImport(json(R"({"left_top_x": -2147483640})"))["FtopLeftX"], Value::string("-2147483648"));
    EXPECT_EQ(definitionFromImport(json(R"({"left_top_x": 1e99})"))["FtopLeftX"], Value::string("2147483637"));
}

TEST(ImportedDefinition, secondScreenAndNoCornerAreNeverSet) {
    const Value record = definitionFromImport(json(fullImport));
    for (const char* key : {"topLeftX2", "FtopLeftX2", "bottomRightY2", "FbottomRightY2", "noCorner"})
        EXPECT_FALSE(record.contains(key)) << key;
}

TEST(TruncatedInteger, dropsFractionsTowardsZeroAndSaturates) {
    EXPECT_EQ(truncatedInteger(2730.9), 2730);
    EXPECT_EQ(truncatedInteger(-1.9), -1);
    EXPECT_EQ(truncatedInteger(1e18), std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(truncatedInteger(-1e18), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(truncatedInteger(std::nan("")), 0);
}

} // namespace
