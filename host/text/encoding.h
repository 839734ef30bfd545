// The bytes that texts have on the lines.
//
// Files and the terminal are UTF-8. The tables hold every text in the encoding of the site's lines:
// the library hands texts from the tables to the line byte by byte.
#ifndef PAGERFWD_HOST_TEXT_ENCODING_H
#define PAGERFWD_HOST_TEXT_ENCODING_H

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace host {

enum class Encoding { kLatin1, kShiftJis };

// The words of the site file: "latin1" and "shift_jis".
std::optional<Encoding> EncodingNamed(std::string_view word);
std::string_view WordFor(Encoding encoding);

// What the C library calls it.
const char* IconvName(Encoding encoding);

// A character that the encoding doesn't have.
class NotEncodable : public std::runtime_error {
 public:
    // character: as messages name it, such as '€' (U+20AC).
    explicit NotEncodable(const std::string& character) : std::runtime_error(character) {}
};

// Throws NotEncodable, whose text is the first such character, and std::runtime_error where this
// system can't convert at all.
std::string Encode(std::string_view utf8, Encoding encoding);

// For eyes: bytes that mean nothing in the encoding become U+FFFD.
std::string Decode(std::string_view bytes, Encoding encoding);

}  // namespace host

#endif
