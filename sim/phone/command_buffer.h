// What is typed at a modem, gathered into command lines.
#ifndef PAGERFWD_SIM_PHONE_COMMAND_BUFFER_H
#define PAGERFWD_SIM_PHONE_COMMAND_BUFFER_H

#include <optional>
#include <string>

namespace pagersim {

// A line begins with AT, wherever that comes: what stands before it (a stray +++, the line feed
// behind the last carriage return) means nothing. It ends with a carriage return. A backspace takes
// a character back, other controls are skipped, and "A/" stands for the line before (V.250, 5.2).
class CommandBuffer {
 public:
    // The next character. Returns a line's body, without AT and carriage return, when it is
    // complete.
    std::optional<std::string> Heard(char c);

 private:
    std::optional<std::string> HeardBeforeLine(char c);
    std::optional<std::string> HeardInLine(char c);

    bool after_a_ = false;
    bool in_line_ = false;
    std::string body_;
    std::string last_body_;
};

}  // namespace pagersim

#endif
