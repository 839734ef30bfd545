// The folder that a line's process works in: the library's trace lies there, since the library
// writes it where its process stands.
//
// Errors     StoreError, naming the folder.
#ifndef PAGERFWD_HOST_LINES_LINE_FOLDER_H
#define PAGERFWD_HOST_LINES_LINE_FOLDER_H

#include <string>

namespace host {

// "site.db-lines/COM%201": beside the database, by the line's name.
std::string LineFolder(const std::string& database, const std::string& line);

// The same, made where there is none: for whom the database belongs to, and nobody else.
std::string MakeLineFolder(const std::string& database, const std::string& line);

// The library's trace, in its folder.
inline constexpr const char* kTraceFile = "pageprot.txt";

}  // namespace host

#endif
