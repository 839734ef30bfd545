// What a page is known by. Texts as the tables have them.
#ifndef PAGERFWD_HOST_PAGES_PAGE_KEY_H
#define PAGERFWD_HOST_PAGES_PAGE_KEY_H

#include <string>

namespace host {

struct PageKey {
    std::string alarm;  // its number
    std::string group;
    std::string pager;
};

}  // namespace host

#endif
