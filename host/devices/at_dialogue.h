// A talk with a modem in its own language: a command, and what is answered to it.
//
// For as long the line has eight bits, no parity and no flow control; its own settings are put
// back. It is opened without waiting for a carrier.
//
// Threads    One.
// Errors     None is thrown. A device that can't be opened says why; one that goes, or takes no
//            byte, answers no more.
#ifndef PAGERFWD_HOST_DEVICES_AT_DIALOGUE_H
#define PAGERFWD_HOST_DEVICES_AT_DIALOGUE_H

#include <termios.h>

#include <chrono>
#include <string>
#include <vector>

#include "host/files/descriptor.h"

namespace host {

struct AtAnswer {
    std::string result;             // "OK", "NO CARRIER", "CONNECT 1200"; empty: none came
    std::vector<std::string> said;  // lines before it, without the command, which modems echo

    bool IsOk() const { return result == "OK"; }
    bool IsConnect() const { return result.rfind("CONNECT", 0) == 0; }
};

class AtDialogue {
 public:
    using Milliseconds = std::chrono::milliseconds;

    // speed: in bit/s; for one that no line has, as 0, it is 9600.
    AtDialogue(const std::string& device, int speed);
    ~AtDialogue();
    AtDialogue(const AtDialogue&) = delete;
    AtDialogue& operator=(const AtDialogue&) = delete;

    // Why nothing can be asked: "can't be opened: No such file or directory". Empty: it can.
    const std::string& WhyNot() const { return why_not_; }

    // Says the command, and hears what comes until a result code of V.250 or of common modems ends
    // it, it was silent for so long altogether, ten seconds more are over, or a descriptor can be
    // read, if one is given. Nothing that came before is part of the answer.
    AtAnswer Ask(const std::string& command, Milliseconds longest, int until = -1);

    // Out of a call into the command state: "+++" with a second of silence on either side, as
    // modems ask for unless they were told otherwise. The call goes on.
    AtAnswer Escape();

    // Lets go of DTR for a second: modems hang up, unless &D0 tells them not to.
    void DropDtr();

 private:
    void SetUp(int speed);
    AtAnswer Say(const std::string& bytes, const std::string& echo, Milliseconds longest,
                 int until = -1);
    std::string Hear(Milliseconds longest, int until) const;

    const Descriptor line_;
    std::string why_not_;
    termios before_{};
    termios asking_{};
};

}  // namespace host

#endif
