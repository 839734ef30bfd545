// Conversion by iconv. Tested by tests/unit/host/encoding_test.cpp.
#include "host/text/converter.h"

#include <array>
#include <cerrno>
#include <stdexcept>

namespace host {

Converter::Converter(const std::string& to, const std::string& from)
    : descriptor_(iconv_open(to.c_str(), from.c_str())) {
    // iconv_open marks a failure with a pointer of all ones.
    if (descriptor_ == reinterpret_cast<iconv_t>(-1)) {  // NOLINT(performance-no-int-to-ptr)
        throw std::runtime_error("this system can't convert " + from + " to " + to);
    }
}

Converter::~Converter() {
    iconv_close(descriptor_);
}

std::string Converter::Take(std::string_view& text) {
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

}  // namespace host
