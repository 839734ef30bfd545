// A test call: a number is dialled over a line, and the call ended as soon as the other side
// answers. Nobody is paged.
//
// The modem is set up and dials as for a page: the port's init command, and the dial command's
// form (ATDT, ATDP, ATX3DT ...), but with the number that is given in the place of what the port
// dials, whole.
#ifndef PAGERFWD_HOST_LINE_TEST_CALL_H
#define PAGERFWD_HOST_LINE_TEST_CALL_H

#include <cstdint>
#include <string>
#include <string_view>

#include "host/lines/site_lines.h"

namespace host {

// As the library's results of a page.
enum TestCallResult : int32_t {
    kConnected = 0,
    kLineNotOpened = 5,
    kNotConnected = 6,
    kModemFails = 8,  // it doesn't answer, refuses its init command, or doesn't hang up
};

struct TestCall {
    TestCallResult result;
    std::string
        said;  // what came of it, in words: "CONNECT 1200", "BUSY", "the modem doesn't answer"
};

// What a modem takes behind D to dial and nothing else (V.250, chapter 6.3.1): digits, pauses,
// pulse or tone, and what makes a number legible; with a digit, of sixty characters at most.
bool IsDialString(std::string_view number);

// The command that dials.
std::string DialCommand(const SiteLine& line, const std::string& number);

// Takes two minutes and some seconds at most; the line is left hung up. device: as the process
// opens it. stop: the call is given up as soon as this descriptor can be read.
TestCall MakeTestCall(const std::string& device, const SiteLine& line, const std::string& number,
                      int stop);

}  // namespace host

#endif
