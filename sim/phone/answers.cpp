// The modem's answers. Tested by tests/unit/sim/modem_test.cpp.
#include "sim/phone/answers.h"

#include <array>

namespace pagersim {
namespace {

struct Form {
    Answer answer;
    const char* words;
    const char* number;
};

constexpr std::array<Form, 7> kForms = {{
    {Answer::kOk, "OK", "0"},
    {Answer::kConnect, "CONNECT", "1"},
    {Answer::kNoCarrier, "NO CARRIER", "3"},
    {Answer::kError, "ERROR", "4"},
    {Answer::kNoDialtone, "NO DIALTONE", "6"},
    {Answer::kBusy, "BUSY", "7"},
    {Answer::kNoAnswer, "NO ANSWER", "8"},
}};

const Form& FormOf(Answer answer) {
    for (const Form& form : kForms) {
        if (form.answer == answer) {
            return form;
        }
    }
    return kForms.front();
}

}  // namespace

std::string AnswerText(Answer answer, bool verbose, unsigned connect_speed) {
    const Form& form = FormOf(answer);
    if (!verbose) {
        return std::string(form.number) + "\r";
    }
    std::string words = form.words;
    if (answer == Answer::kConnect && connect_speed != 0) {
        words += " " + std::to_string(connect_speed);
    }
    return "\r\n" + words + "\r\n";
}

std::optional<Answer> AnswerNamed(std::string_view words) {
    for (const Form& form : kForms) {
        if (form.words == words) {
            return form.answer;
        }
    }
    return std::nullopt;
}

}  // namespace pagersim
