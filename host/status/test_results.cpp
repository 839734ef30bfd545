// Results of a test page. Tested by tests/unit/host/cli_test.cpp and web_pages_test.cpp.
#include "host/status/test_results.h"

namespace host {
namespace {

constexpr TestResult kDialled = {
    0, "dialled; the call is the page, and nothing confirms that it arrived", ""};

constexpr TestResult kResults[] = {
    {-1, "the library doesn't know the pager or its hours",
     "Look at the site file with: pagerfwd check"},
    {0, "sent", ""},
    {5, "no line: the port is unknown or taken, or can't be opened or set",
     "Is the port in the site file, does /dev/ttyS* exist, may this user open it, and does another "
     "program hold it?"},
    {6, "dialling failed: busy, no answer, no carrier or no dial tone",
     "Is the telephone line plugged in, and the dial command of the port right?"},
    {7, "the paging centre answered the call, but didn't take the page",
     "Do the protocol, the data bits and the parity of the port suit the centre, and is the "
     "pager's number right?"},
    {8, "the modem didn't answer its initialisation",
     "Is the modem switched on, and are its speed and its init command right?"},
};

}  // namespace

const TestResult* FindTestResult(int64_t code, bool dial_is_page) {
    if (code == kDialled.code && dial_is_page) {
        return &kDialled;
    }
    for (const TestResult& result : kResults) {
        if (result.code == code) {
            return &result;
        }
    }
    return nullptr;
}

}  // namespace host
