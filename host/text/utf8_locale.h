// Texts as UTF-8 for the C library, whatever locale the process has.
#ifndef PAGERFWD_HOST_TEXT_UTF8_LOCALE_H
#define PAGERFWD_HOST_TEXT_UTF8_LOCALE_H

#include <locale.h>

namespace host {

// While it lives, patterns match characters, characters have a width, and iconv knows the nearest
// letters of all of Latin. On a system without such a locale nothing changes.
//
// Threads    Holds for its own.
class Utf8Locale {
 public:
    Utf8Locale() : utf8_(newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr)), before_(uselocale(utf8_)) {}
    ~Utf8Locale() {
        uselocale(before_);
        if (utf8_ != nullptr) {
            freelocale(utf8_);
        }
    }
    Utf8Locale(const Utf8Locale&) = delete;
    Utf8Locale& operator=(const Utf8Locale&) = delete;

 private:
    const locale_t utf8_;
    const locale_t before_;
};

}  // namespace host

#endif
