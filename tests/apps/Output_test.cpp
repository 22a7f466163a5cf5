#include "Output.h"

#include <gmock/gmock.h>

#include <sstream>

using namespace ConfigStoreCtl;
using ::testing::HasSubstr;
using ::testing::Not;

namespace
{
const Listing LISTING = {{{"NAME", "name"}, {nullptr, "hidden"}, {"SIZE", nullptr}, {"PARTS", "parts"}},
                         {{"Zürich", true, std::int64_t{7}, std::vector<std::string>{"a", "b"}},
                          {"x", false, std::int64_t{12345}, std::vector<std::string>{}},
                          {"\x1b[2J", Field(), std::int64_t{0}, Field()}}};

std::string Printed(Output::Style style, void (Output::*print)(const Listing&, const std::string&),
                    const Listing& listing)
{
    std::ostringstream stream;
    Output output(stream, style);
    (output.*print)(listing, "");
    output.Flush();
    return stream.str();
}

std::string PrintedRecord(const Field& field)
{
    std::ostringstream stream;
    Output output(stream, {});
    output.Record({{{"name", "name"}, {"long title", "title"}}, {{"x", field}}});
    output.Flush();
    return stream.str();
}
}  // namespace

TEST(Output, AlignsTheColumnsOfATable)
{
    EXPECT_EQ(Printed({}, &Output::Table, LISTING),
              "NAME     SIZE   PARTS\n"
              "Zürich   7      a b\n"
              "x        12345  -\n"
              "\\x1b[2J  0      -\n");
}

TEST(Output, WritesATableAsAnArrayOfObjects)
{
    EXPECT_EQ(Printed({.json = true}, &Output::Table, {LISTING.columns, {LISTING.rows[1]}}),
              "[\n  {\n    \"name\": \"x\",\n    \"hidden\": false,\n    \"parts\": []\n  }\n]\n");
    EXPECT_EQ(Printed({.json = true}, &Output::Table, {LISTING.columns, {}}), "[]\n");
}

TEST(Output, ColoursTheHeadingOnlyWhenAsked)
{
    EXPECT_THAT(Printed({.colour = true}, &Output::Table, LISTING), HasSubstr("\x1b[1mNAME"));
    EXPECT_THAT(Printed({}, &Output::Table, LISTING), Not(HasSubstr("\x1b")));
    EXPECT_THAT(Printed({.json = true, .colour = true}, &Output::Table, LISTING), Not(HasSubstr("\x1b")));
}

TEST(Output, LaysJsonOfARecordOut)
{
    EXPECT_EQ(PrintedRecord(JsonText{R"({"a":[1]})"}),
              "name        x\n"
              "long title  {\n"
              "              \"a\": [\n"
              "                1\n"
              "              ]\n"
              "            }\n");
}

TEST(Output, ShowsAValueThatIsNoJsonAsText)
{
    EXPECT_EQ(PrintedRecord(JsonText{"mark for\ndeletion"}), "name        x\nlong title  mark for\\ndeletion\n");
}

TEST(Output, GivesEachElementOfAListInARecordALine)
{
    EXPECT_EQ(PrintedRecord(std::vector<std::string>{"a", "b"}), "name        x\nlong title  a\n            b\n");
}

TEST(Output, SaysWhatItWasGivenInsteadOfAnEmptyTable)
{
    std::ostringstream stream;
    Output output(stream, {});
    output.Table({LISTING.columns, {}}, "nothing here");
    output.Records({LISTING.columns, {}}, "nor here");
    output.Flush();
    EXPECT_EQ(stream.str(), "nothing here\nnor here\n");
}

TEST(Output, ContinuesAStreamWithoutHeadingAndWithOneJsonObjectPerLine)
{
    std::ostringstream stream;
    Output output(stream, {.json = true});
    output.Stream({{{"A", "a", 5}}, {{"x"}, {"y"}}}, true);
    output.Flush();
    EXPECT_EQ(stream.str(), "{\"a\":\"x\"}\n{\"a\":\"y\"}\n");
    Output text(stream, {});
    stream.str("");
    text.Stream({{{"A", "a", 5}, {"B", "b"}}, {{"x", "y"}}}, true);
    text.Stream({{{"A", "a", 5}, {"B", "b"}}, {{"z", "y"}}}, false);
    text.Flush();
    EXPECT_EQ(stream.str(), "A      B\nx      y\nz      y\n");
}

TEST(Output, WritesNothingBeforeFlush)
{
    std::ostringstream stream;
    Output output(stream, {});
    output.Table(LISTING);
    EXPECT_EQ(stream.str(), "");
}

TEST(Output, ThrowsWhenTheStreamDoesNotTakeIt)
{
    std::ostringstream stream;
    Output output(stream, {});
    output.Table(LISTING);
    stream.setstate(std::ios::badbit);
    EXPECT_THROW(output.Flush(), OutputFailure);
}
