// What a line's process is from its beginning to its end.
//
// Errors     As its exit code; in words for the operator, on standard error.
#ifndef PAGERFWD_HOST_LINE_SERVE_LINE_H
#define PAGERFWD_HOST_LINE_SERVE_LINE_H

#include <string>

#include "host/lines/line_exit.h"
#include "host/store/connection.h"

namespace host {

struct ServeLineOptions {
    std::string database;
    std::string library;
    std::string locks;
    std::string line;
    int bell = -1;  // the descriptor of its end of the node's bell
    // On a site of several hosts: for whom it works, and the descriptor of that one's deadline.
    Tenure tenure = {};
    int deadline = -1;
    bool ask = false;        // only to ask the modem whether it is there
    bool dial_tone = false;  // ... and whether it hears one
    bool call = false;       // only to make the test call that is asked of the line
};

// In the line's folder.
LineExit ServeLine(const ServeLineOptions& options);

}  // namespace host

#endif
