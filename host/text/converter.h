// From one encoding to another, by the C library's iconv.
#ifndef PAGERFWD_HOST_TEXT_CONVERTER_H
#define PAGERFWD_HOST_TEXT_CONVERTER_H

#include <iconv.h>

#include <string>
#include <string_view>

namespace host {

inline constexpr const char* kUtf8 = "UTF-8";

// Errors     std::runtime_error where this system can't convert so.
class Converter {
 public:
    // The names are iconv's.
    Converter(const std::string& to, const std::string& from);
    ~Converter();
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    // Takes what can be converted off the front of the text, and returns it converted.
    std::string Take(std::string_view& text);

 private:
    iconv_t descriptor_;
};

}  // namespace host

#endif
