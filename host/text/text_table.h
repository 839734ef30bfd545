// Rows in columns that fit, for a terminal.
#ifndef PAGERFWD_HOST_TEXT_TEXT_TABLE_H
#define PAGERFWD_HOST_TEXT_TEXT_TABLE_H

#include <string>
#include <string_view>
#include <vector>

namespace host {

// Each column is as wide as its widest cell, and two blanks stand between two. The cells are UTF-8
// that a terminal may be shown. One that is wider than kWidest places, or kWidestLast in the last
// column, is cut, and ends in an ellipsis.
class TextTable {
 public:
    static constexpr size_t kWidest = 40;
    static constexpr size_t kWidestLast = 120;

    explicit TextTable(std::vector<std::string> heading) : rows_{std::move(heading)} {}

    // As many cells as the heading has.
    void Add(std::vector<std::string> row);

    // The heading and the rows, a line each; no text where there is no row.
    std::string Text() const;

 private:
    std::vector<std::vector<std::string>> rows_;  // the heading first
};

// How many places the text takes on a terminal.
size_t PlacesOf(std::string_view utf8);

// As much of its beginning as so many places hold.
std::string_view CutToPlaces(std::string_view utf8, size_t places);

// The text, or as much of its beginning as so many places hold with an ellipsis behind it.
std::string Shortened(std::string_view utf8, size_t places);

}  // namespace host

#endif
