// What a page is known by. Texts as the tables have them.
#ifndef PAGERFWD_HOST_STORE_TABLES_PAGE_KEY_H
#define PAGERFWD_HOST_STORE_TABLES_PAGE_KEY_H

#include <string>
#include <vector>

#include "host/store/connection.h"

namespace host {

struct PageKey {
    std::string alarm;  // its number
    std::string group;
    std::string pager;
};

// The first three columns of the row; of all rows that are left.
inline PageKey KeyIn(const Statement& row) {
    return {std::string(row.Text(0)), std::string(row.Text(1)), std::string(row.Text(2))};
}
inline std::vector<PageKey> KeysIn(Statement& rows) {
    std::vector<PageKey> keys;
    while (rows.Step()) {
        keys.push_back(KeyIn(rows));
    }
    return keys;
}

}  // namespace host

#endif
