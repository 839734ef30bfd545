// Conversion by the C library's iconv. Tested by tests/unit/host/encoding_test.cpp.
#include "host/text/encoding.h"

#include "host/text/converter.h"
#include "host/text/printable.h"

namespace host {
namespace {

// Windows' Shift_JIS is the one that keeps the backslash and the tilde in both directions, where
// JIS X 0201 has the yen sign and the overline: it takes both.
struct Name {
    Encoding encoding;
    std::string_view word;
    const char* iconv;
};
constexpr Name kNames[] = {
    {Encoding::kLatin1, "latin1", "ISO-8859-1"},
    {Encoding::kShiftJis, "shift_jis", "CP932"},
};
constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD

const Name& NameOf(Encoding encoding) {
    for (const Name& name : kNames) {
        if (name.encoding == encoding) {
            return name;
        }
    }
    throw std::logic_error("an encoding without a name");
}

}  // namespace

std::optional<Encoding> EncodingNamed(std::string_view word) {
    for (const Name& name : kNames) {
        if (name.word == word) {
            return name.encoding;
        }
    }
    return std::nullopt;
}

std::string_view WordFor(Encoding encoding) {
    return NameOf(encoding).word;
}

const char* IconvName(Encoding encoding) {
    return NameOf(encoding).iconv;
}

std::string Encode(std::string_view utf8, Encoding encoding) {
    std::string bytes = Converter(NameOf(encoding).iconv, kUtf8).Take(utf8);
    if (!utf8.empty()) {
        throw NotEncodable(NameOf(FirstCharacter(utf8), utf8));
    }
    return bytes;
}

std::string Decode(std::string_view bytes, Encoding encoding) {
    Converter converter(kUtf8, NameOf(encoding).iconv);
    std::string utf8 = converter.Take(bytes);
    while (!bytes.empty()) {
        bytes.remove_prefix(1);
        utf8 += kReplacement;
        utf8 += converter.Take(bytes);
    }
    return utf8;
}

}  // namespace host
