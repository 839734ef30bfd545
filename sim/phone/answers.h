// What a Hayes modem answers.
#ifndef PAGERFWD_SIM_PHONE_ANSWERS_H
#define PAGERFWD_SIM_PHONE_ANSWERS_H

#include <optional>
#include <string>
#include <string_view>

namespace pagersim {

enum class Answer { kOk, kConnect, kNoCarrier, kError, kNoDialtone, kBusy, kNoAnswer };

// The answer as it goes to the program: "\r\nNO CARRIER\r\n", or "3\r" when not verbose
// (V.250, 6.3). `connect_speed` is added to CONNECT unless it is 0.
std::string AnswerText(Answer answer, bool verbose, unsigned connect_speed);

// "NO CARRIER" and so on; none for another text.
std::optional<Answer> AnswerNamed(std::string_view words);

}  // namespace pagersim

#endif
