// How a page stands, in words.
#ifndef PAGERFWD_HOST_PAGES_PAGE_WORDS_H
#define PAGERFWD_HOST_PAGES_PAGE_WORDS_H

#include "host/pages/history.h"

namespace host {

// One word or two, of a state: "pending", "undelivered".
const char* StateOf(const PageStory& page);

// How a page ended: "given up: its tries are used up, and none got through".
const char* EndOf(const PageStory& page);

}  // namespace host

#endif
