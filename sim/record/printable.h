// Bytes as a reader sees them: controls by their ASCII names, such as <cr>.
#ifndef PAGERFWD_SIM_RECORD_PRINTABLE_H
#define PAGERFWD_SIM_RECORD_PRINTABLE_H

#include <string>
#include <string_view>

namespace pagersim {

// For a dialogue: every byte outside printable ASCII by its name or as <hex>, "\x02" "1\xe9" is
// "<stx>1<e9>". A '<' stays as it is.
std::string Printable(std::string_view bytes);

// For a page's text, which a centre may have decoded to UTF-8: as Printable, but well-formed UTF-8
// stays as it is. The result is always well-formed.
std::string PrintableText(std::string_view text);

// How many bytes the UTF-8 character at the start of `text` has; 0 where there is none.
std::size_t Utf8Length(std::string_view text);

}  // namespace pagersim

#endif
