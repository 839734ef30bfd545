// Columns that fit.
#include "host/text/text_table.h"

#include <gtest/gtest.h>

namespace host {
namespace {

TEST(TextTables, HaveColumnsAsWideAsTheirWidestCell) {
    TextTable table({"ALARM", "PAGER", "TEXT"});
    table.Add({"7", "the duty phone", "x"});
    table.Add({"978948000", "b", ""});
    EXPECT_EQ(
        "ALARM      PAGER           TEXT\n"
        "7          the duty phone  x\n"
        "978948000  b               \n",
        table.Text());
}

TEST(TextTables, CountPlacesAndNotBytes) {
    TextTable table({"A", "B"});
    table.Add({"J\u00FCrgen", "x"});
    table.Add({"\u6771\u4EAC", "y"});
    table.Add({"e\u0301", "z"});
    EXPECT_EQ(
        "A       B\n"
        "J\u00FCrgen  x\n"
        "\u6771\u4EAC    y\n"
        "e\u0301       z\n",
        table.Text());
}

TEST(TextTables, CutWhatIsTooWide) {
    const std::string wide(TextTable::kWidest, 'x');
    const std::string last(TextTable::kWidestLast, 'y');
    TextTable table({"A", "B"});
    table.Add({wide, last});
    table.Add({wide + "x", last + "y"});
    EXPECT_EQ("A" + std::string(TextTable::kWidest + 1, ' ') + "B\n" + wide + "  " + last + "\n" +
                  wide.substr(1) + "\u2026  " + last.substr(1) + "\u2026\n",
              table.Text());
}

TEST(TextTables, WithoutARowAreEmpty) {
    EXPECT_EQ("", TextTable({"A", "B"}).Text());
}

TEST(Places, AreThoseOfATerminal) {
    EXPECT_EQ(0U, PlacesOf(""));
    EXPECT_EQ(2U, PlacesOf("\u6771"));
    EXPECT_EQ(1U, PlacesOf("\xFF"));
    EXPECT_EQ(1U, PlacesOf("\x01"));
}

TEST(Places, EndInAnEllipsisWhereATextIsCut) {
    EXPECT_EQ("abc", Shortened("abc", 3));
    EXPECT_EQ("ab\u2026", Shortened("abcd", 3));
    EXPECT_EQ("\u6771\u2026", Shortened("\u6771\u4EACx", 4));
    EXPECT_EQ("", Shortened("", 3));
}

TEST(Places, CutATextBetweenCharacters) {
    EXPECT_EQ("J\u00FC", CutToPlaces("J\u00FCrgen", 2));
    EXPECT_EQ("\u6771", CutToPlaces("\u6771\u4EAC", 3));
    EXPECT_EQ("\u6771\u4EAC", CutToPlaces("\u6771\u4EAC", 4));
    EXPECT_EQ("", CutToPlaces("abc", 0));
    EXPECT_EQ("e\u0301", CutToPlaces("e\u0301x", 1));
}

}  // namespace
}  // namespace host
