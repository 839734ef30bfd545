// A session of SNPP, level 1 and 2 of RFC 1861, and of level 3 what tells of a page's fate (2WAY,
// MSTAtus): from each line that comes to what is answered. It knows no socket and no clock.
//
//   220 PagerFwd ready, SNPP level 2   PAGEr duty
//   250 OK                             MESSage Pump 3 stands still
//   250 OK                             SEND
//   250 OK, it is kept and will be sent; its tag is 978948000 492034118233
//
// Who comes from an address that isn't let in has to LOGIn with a token first. SEND is answered
// behind the commit.
//
// Threads    One at a time.
// Errors     None; the log hears of trouble with the database.
#ifndef PAGERFWD_HOST_SNPP_DIALOGUE_H
#define PAGERFWD_HOST_SNPP_DIALOGUE_H

#include <cstddef>
#include <string>
#include <string_view>

#include "host/process/operator_log.h"
#include "host/snpp/desk.h"

namespace host {

struct SnppAnswer {
    std::string text;   // whole lines; empty: nothing is answered
    bool ends = false;  // the session, behind it
};

inline constexpr const char* kSnppGreeting = "220 PagerFwd ready, SNPP level 2\r\n";
inline constexpr const char* kSnppClosing = "421 Closing: ";  // ... why, CR LF

class SnppDialogue {
 public:
    // source: the sender's address. may_send: without a token.
    SnppDialogue(const SnppDesk& desk, OperatorLog& log, std::string source, bool may_send);

    // line: without its end.
    SnppAnswer Hear(std::string_view line);

 private:
    struct Step;
    static const Step kSteps[];

    SnppAnswer Obey(std::string_view line);
    SnppAnswer HearData(std::string_view line);
    SnppAnswer Mistake(const std::string& text);

    SnppAnswer LogIn(const std::string& argument);
    SnppAnswer Pager(const std::string& argument);
    SnppAnswer Text(const std::string& argument);
    SnppAnswer Data(const std::string& argument);
    SnppAnswer Level(const std::string& argument);
    SnppAnswer Subject(const std::string& argument);
    SnppAnswer Caller(const std::string& argument);
    SnppAnswer Alert(const std::string& argument);
    SnppAnswer Coverage(const std::string& argument);
    SnppAnswer Hold(const std::string& argument);
    SnppAnswer TwoWay(const std::string& argument);
    SnppAnswer Send(const std::string& argument);
    SnppAnswer Status(const std::string& argument);
    SnppAnswer Reset(const std::string& argument);
    SnppAnswer Help(const std::string& argument);
    SnppAnswer Quit(const std::string& argument);

    const SnppDesk& desk_;
    OperatorLog& log_;
    std::string who_;  // the sender's address, or the name of his token
    bool may_send_;

    SnppMessage message_;
    std::string subject_;
    bool has_text_ = false;
    bool reads_data_ = false;
    bool data_is_too_long_ = false;
    bool two_way_ = false;
    int mistakes_ = 0;
};

}  // namespace host

#endif
