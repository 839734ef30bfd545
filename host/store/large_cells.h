// Cells that are too large to be read where every look at a table meets them.
//
// A text of more than kLongestCell in what an alarm or a page is found by, such as its number, its
// state or its time, would stop each question that is asked of its table, and with it everybody
// else's pages. Only another program writes such a one. It is emptied, and the row ends as off
// limit: nobody knows what it meant. What an alarm merely says is left as it is; those who read it
// set that one row aside.
#ifndef PAGERFWD_HOST_STORE_LARGE_CELLS_H
#define PAGERFWD_HOST_STORE_LARGE_CELLS_H

#include <string>
#include <vector>

#include "host/store/connection.h"

namespace host {

// Empties them, and names the rows: "row 7 of AlarmLog". Reads the tables from end to end: for the
// start, and for whoever met RowTooLarge. Throws StoreError.
std::vector<std::string> EmptyLargeCells(Connection& connection);

// For who only looks: from now on each table is seen with such cells, of whatever column, empty, as
// long as AnyLength lives. Throws StoreError.
void HideLargeCells(Connection& connection);

}  // namespace host

#endif
