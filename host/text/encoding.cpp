// Conversion by the C library's iconv. Tested by tests/unit/host/encoding_test.cpp.
#include "host/text/encoding.h"

#include <iconv.h>

#include <array>
#include <cerrno>
#include <utility>

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
constexpr const char* kUtf8 = "UTF-8";
constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD

const Name& NameOf(Encoding encoding) {
    for (const Name& name : kNames) {
        if (name.encoding == encoding) {
            return name;
        }
    }
    throw std::logic_error("an encoding without a name");
}

class Converter {
 public:
    Converter(const char* to, const char* from) : descriptor_(iconv_open(to, from)) {
        // iconv_open marks a failure with a pointer of all ones.
        if (descriptor_ == reinterpret_cast<iconv_t>(-1)) {  // NOLINT(performance-no-int-to-ptr)
            throw std::runtime_error(std::string("this system can't convert ") + from + " to " +
                                     to);
        }
    }
    ~Converter() { iconv_close(descriptor_); }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    // Takes what can be converted off the front of the text, and returns it converted.
    std::string Take(std::string_view& text) {
        std::string converted;
        while (!text.empty()) {
            std::array<char, 256> buffer{};
            char* in = const_cast<char*>(text.data());  // iconv doesn't write there
            size_t inLeft = text.size();
            char* out = buffer.data();
            size_t outLeft = buffer.size();
            const size_t result = iconv(descriptor_, &in, &inLeft, &out, &outLeft);
            converted.append(buffer.data(), buffer.size() - outLeft);
            text.remove_prefix(text.size() - inLeft);
            if (result == static_cast<size_t>(-1) && errno != E2BIG) {
                break;
            }
        }
        return converted;
    }

 private:
    iconv_t descriptor_;
};

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
