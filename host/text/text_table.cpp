// Columns. Tested by tests/unit/host/text_table_test.cpp.
#include "host/text/text_table.h"

#include <wchar.h>

#include <algorithm>

#include "host/text/printable.h"
#include "host/text/utf8_locale.h"

namespace host {
namespace {

constexpr size_t kBetween = 2;

// Kanji take two places; an accent that is a character of its own takes none.
size_t PlacesOf(const Utf8Character& character) {
    const int places = character.valid ? wcwidth(static_cast<wchar_t>(character.code)) : 1;
    return places < 0 ? 1 : static_cast<size_t>(places);
}

}  // namespace

size_t PlacesOf(std::string_view utf8) {
    const Utf8Locale locale;
    size_t places = 0;
    while (!utf8.empty()) {
        const Utf8Character character = FirstCharacter(utf8);
        places += PlacesOf(character);
        utf8.remove_prefix(character.length);
    }
    return places;
}

std::string_view CutToPlaces(std::string_view utf8, size_t places) {
    const Utf8Locale locale;
    size_t end = 0;
    while (end < utf8.size()) {
        const Utf8Character character = FirstCharacter(utf8.substr(end));
        if (PlacesOf(character) > places) {
            break;
        }
        places -= PlacesOf(character);
        end += character.length;
    }
    return utf8.substr(0, end);
}

std::string Shortened(std::string_view utf8, size_t places) {
    if (CutToPlaces(utf8, places).size() == utf8.size()) {
        return std::string(utf8);
    }
    return std::string(CutToPlaces(utf8, places - 1)) + "\u2026";
}

void TextTable::Add(std::vector<std::string> row) {
    for (std::string& cell : row) {
        cell = Shortened(cell, &cell == &row.back() ? kWidestLast : kWidest);
    }
    rows_.push_back(std::move(row));
}

std::string TextTable::Text() const {
    if (rows_.size() == 1) {
        return {};
    }
    std::vector<size_t> widths(rows_.front().size());
    for (const std::vector<std::string>& row : rows_) {
        for (size_t column = 0; column < widths.size(); ++column) {
            widths[column] = std::max(widths[column], PlacesOf(row.at(column)));
        }
    }
    std::string text;
    for (const std::vector<std::string>& row : rows_) {
        for (size_t column = 0; column + 1 < widths.size(); ++column) {
            text +=
                row[column] + std::string(widths[column] - PlacesOf(row[column]) + kBetween, ' ');
        }
        text += row.back() + "\n";
    }
    return text;
}

}  // namespace host
