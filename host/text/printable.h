// Texts from tables and files, made fit for a terminal.
#ifndef PAGERFWD_HOST_TEXT_PRINTABLE_H
#define PAGERFWD_HOST_TEXT_PRINTABLE_H

#include <cstdint>
#include <string>
#include <string_view>

namespace host {

// The text with every byte that could steer a terminal, or is not UTF-8, written as \x1b. A
// backslash stays as it is: the result is for eyes, and not to be read back.
std::string Printable(std::string_view utf8);

// The UTF-8 character at the start of the text, and how many bytes it takes. A byte that begins
// none counts as a character of its own with valid = false.
struct Utf8Character {
    uint32_t code;
    size_t length;
    bool valid;
};
Utf8Character FirstCharacter(std::string_view utf8);

// Whether it could steer a terminal, or a page: a control character, or a mark that turns the
// direction of writing.
bool Steers(uint32_t code);

// How messages name a character: 'é' (U+00E9), or U+0007 alone where it can't be shown.
std::string NameOf(const Utf8Character& character, std::string_view utf8);

}  // namespace host

#endif
