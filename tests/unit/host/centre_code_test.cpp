// What a centre says itself of a page that it doesn't take.
#include "host/trace/centre_code.h"

#include <gtest/gtest.h>

namespace host {
namespace {

struct CodeCase {
    const char* situation;
    const char* heard;
    const char* code;
};

TEST(CentreCode, IsFoundInWhatWasHeard) {
    const CodeCase cases[] = {
        {"TAP, alone", "515 Message format error<cr><rs><cr>", "515 Message format error"},
        {"TAP, behind a good word", "110 1.8<cr><ack><cr>514 Checksum error<cr><nak><cr>",
         "514 Checksum error"},
        {"TAP, a code without words", "<cr>507<cr><nak><cr>", "507"},
        {"TAP, the latest of several", "514 Checksum error<cr><nak><cr>503 Too many<cr><esc><eot>",
         "503 Too many"},
        {"TAP, and the modem", "515 Format<cr><rs><cr><cr><lf>NO CARRIER<cr><lf>", "515 Format"},
        {"TAP, not a refusal", "211 Page accepted<cr><ack><cr>", ""},
        {"no code: more digits", "5155<cr>", ""},
        {"no code: fewer", "51<cr>", ""},
        {"no code: other characters", "5x5 a<cr>55x a<cr>", ""},
        {"no code: within a line", "call 515 now<cr>", ""},
        {"UCP", "<stx>03/00022/R/51/N/24//12<etx>", "error 24 (message too long)"},
        {"UCP, a code without words", "<stx>03/00022/R/51/N/31//12<etx>", "error 31"},
        {"UCP, a positive result", "<stx>03/00039/R/51/A//012234:090996101010/68<etx>", ""},
        {"UCP, cut off", "<stx>03/00022/R/51/N/2", ""},
        {"UCP, no digits", "<stx>03/00022/R/51/N/xx//12<etx>", ""},
        {"nothing", "", ""},
    };
    for (const CodeCase& one : cases) {
        EXPECT_EQ(one.code, CentreCodeIn(one.heard)) << one.situation;
    }
}

TEST(CentreCode, OfUcpIsNamedAsItsPublicationDoes) {
    const CodeCase cases[] = {
        {"", "/R/51/N/01/", "error 01 (checksum error)"},
        {"", "/R/51/N/02/", "error 02 (syntax error)"},
        {"", "/R/51/N/04/", "error 04 (operation not allowed)"},
        {"", "/R/51/N/05/", "error 05 (call barring active)"},
        {"", "/R/51/N/06/", "error 06 (recipient invalid)"},
        {"", "/R/51/N/07/", "error 07 (authentication failure)"},
        {"", "/R/51/N/26/", "error 26 (message type not valid)"},
    };
    for (const CodeCase& one : cases) {
        EXPECT_EQ(one.code, CentreCodeIn(one.heard));
    }
}

}  // namespace
}  // namespace host
