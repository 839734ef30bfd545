// Texts of alarms, which have to go out whatever they hold.
#ifndef PAGERFWD_HOST_TEXT_NEAREST_H
#define PAGERFWD_HOST_TEXT_NEAREST_H

#include <string>
#include <string_view>

#include "host/text/encoding.h"

namespace host {

// Encode for a text that is never refused. A character that the encoding lacks is written in the
// nearest letters that the C library knows ('–' as '-'), or as a question mark where it knows none.
// Control characters become blanks: in the middle of a page they end a command or a field.
std::string EncodeNearest(std::string_view utf8, Encoding encoding);

// The same for a text that another program has put into the tables: in UTF-8, where it reads as
// such, otherwise in the encoding of the site. In Shift_JIS two kana may read as one character of
// two bytes, so there only longer characters tell.
std::string MendEncoded(std::string_view bytes, Encoding encoding);

}  // namespace host

#endif
