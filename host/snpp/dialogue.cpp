// Sessions of SNPP. Tested by tests/unit/host/snpp_dialogue_test.cpp, tests/fuzz/snpp_line.cpp.
#include "host/snpp/dialogue.h"

#include <array>
#include <iterator>

#include "host/snpp/command.h"
#include "host/store/connection.h"

namespace host {
namespace {

constexpr int kMostMistakes = 20;
constexpr size_t kMostRecipients = 100;
constexpr size_t kLongestSubject = 1000;

SnppAnswer Say(const std::string& text) {
    return {text + "\r\n"};
}

SnppAnswer Ok() {
    return Say("250 OK");
}

// Levels of service, the most urgent first (RFC 1861, chapter 4.5.3): 0 priority, 1 normal, then
// delays of five minutes to a day.
constexpr const char* kSeverityOfLevel[] = {"critical",      "major",        "minor",
                                            "minor",         "minor",        "informational",
                                            "informational", "informational"};

// 8xx and 9xx are answers of level 3: delivered, and still queued; 7xx: it has failed.
const char* CodeOf(SnppStatus::Kind kind) {
    switch (kind) {
        case SnppStatus::Kind::kPending:
            return "960";
        case SnppStatus::Kind::kDelivered:
            return "880";
        case SnppStatus::Kind::kRead:
            return "881";
        case SnppStatus::Kind::kExpired:
            break;
    }
    return "780";
}

// As HOLDuntil has them, with the century: "20010108090000+0".
std::string Instant(std::time_t instant) {
    std::tm parts{};
    std::array<char, 32> text{};
    gmtime_r(&instant, &parts);
    static_cast<void>(std::strftime(text.data(), text.size(), "%Y%m%d%H%M%S+0", &parts));
    return text.data();
}

}  // namespace

struct SnppDialogue::Step {
    const char* name;
    SnppAnswer (SnppDialogue::*take)(const std::string& argument);
    bool for_anybody;  // before LOGIn, too
    const char* help;
};

const SnppDialogue::Step SnppDialogue::kSteps[] = {
    {"LOGI", &SnppDialogue::LogIn, true, "LOGIn TOKEN: one that may raise alarms"},
    {"PAGE", &SnppDialogue::Pager, false, "PAGEr NAME: a pager or a group; may come again"},
    {"MESS", &SnppDialogue::Text, false, "MESSage TEXT: in one line"},
    {"DATA", &SnppDialogue::Data, false, "DATA: a text of several lines, up to a line of one dot"},
    {"LEVE", &SnppDialogue::Level, false, "LEVEl 0 to 7: 0 is critical, 5 to 7 informational"},
    {"SUBJ", &SnppDialogue::Subject, false, "SUBJect TEXT: stands before the message"},
    {"CALL", &SnppDialogue::Caller, false, "CALLerid NAME: who sends it"},
    {"ALER", &SnppDialogue::Alert, false, "ALERt 0 or 1: changes nothing"},
    {"COVE", &SnppDialogue::Coverage, false, "COVErage AREA: there are no areas"},
    {"HOLD", &SnppDialogue::Hold, false, "HOLDuntil TIME: nothing is held"},
    {"2WAY", &SnppDialogue::TwoWay, false,
     "2WAY: SEND is answered with 960, a tag and a pass code"},
    {"SEND", &SnppDialogue::Send, false, "SEND"},
    {"MSTA", &SnppDialogue::Status, false, "MSTAtus TAG PASSCODE: what became of a message"},
    {"RESE", &SnppDialogue::Reset, true, "RESEt: forgets what hasn't been sent"},
    {"HELP", &SnppDialogue::Help, true, "HELP"},
    {"QUIT", &SnppDialogue::Quit, true, "QUIT"},
};

SnppDialogue::SnppDialogue(const SnppDesk& desk, OperatorLog& log, std::string source,
                           bool may_send)
    : desk_(desk), log_(log), who_(std::move(source)), may_send_(may_send) {}

SnppAnswer SnppDialogue::Hear(std::string_view line) {
    try {
        return reads_data_ ? HearData(line) : Obey(line);
    } catch (const BadField& error) {
        return Say(std::string("554 It can't be sent: ") + error.what());
    } catch (const std::exception& error) {
        log_.Error(error.what());
        return Say("554 The database is away; try again soon");
    }
}

SnppAnswer SnppDialogue::Obey(std::string_view line) {
    const SnppCommand command = ParseSnppLine(line);
    for (const Step& step : kSteps) {
        if (command.name == step.name) {
            return step.for_anybody || may_send_ ? (this->*step.take)(command.argument)
                                                 : Mistake("550 LOGIn first");
        }
    }
    return Mistake("500 There is no such command; HELP lists them");
}

SnppAnswer SnppDialogue::Mistake(const std::string& text) {
    return ++mistakes_ < kMostMistakes
               ? Say(text)
               : SnppAnswer{std::string(kSnppClosing) + "too many mistakes\r\n", true};
}

SnppAnswer SnppDialogue::LogIn(const std::string& argument) {
    // A name may stand before it, as some clients ask for one.
    std::string rest = argument;
    const std::string first = FirstWordOf(rest);
    const std::optional<std::string> name = desk_.NameOf(rest.empty() ? first : rest);
    if (!name) {
        return Mistake("550 This is no token that may raise alarms");
    }
    who_ = *name;
    may_send_ = true;
    return Ok();
}

SnppAnswer SnppDialogue::Pager(const std::string& argument) {
    if (argument.empty() || !desk_.Knows(argument)) {
        return Mistake("550 There is no pager or group of this name");
    }
    if (message_.to.size() >= kMostRecipients) {
        return Mistake("550 There are too many pagers for one message");
    }
    message_.to.push_back(argument);
    return Ok();
}

SnppAnswer SnppDialogue::Text(const std::string& argument) {
    if (has_text_) {
        return Mistake("503 There is a message already; RESEt forgets it");
    }
    if (argument.empty()) {
        return Mistake("550 The message is empty");
    }
    message_.text = argument;
    has_text_ = true;
    return Ok();
}

SnppAnswer SnppDialogue::Data(const std::string&) {
    if (has_text_) {
        return Mistake("503 There is a message already; RESEt forgets it");
    }
    reads_data_ = true;
    data_is_too_long_ = false;
    return Say("354 Begin; end with a line of one dot");
}

SnppAnswer SnppDialogue::HearData(std::string_view line) {
    if (line != ".") {
        data_is_too_long_ |= message_.text.size() + line.size() > kLongestText;
        if (!data_is_too_long_) {
            message_.text += (message_.text.empty() ? "" : "\n") + std::string(line);
        }
        return {};
    }
    reads_data_ = false;
    has_text_ = !data_is_too_long_ && !message_.text.empty();
    if (!has_text_) {
        message_.text.clear();
        return Mistake(data_is_too_long_ ? "550 The message is too long"
                                         : "550 The message is empty");
    }
    return Ok();
}

SnppAnswer SnppDialogue::Level(const std::string& argument) {
    const bool is_digit = argument.size() == 1 && argument[0] >= '0';
    const size_t level =
        is_digit ? static_cast<size_t>(argument[0] - '0') : std::size(kSeverityOfLevel);
    if (level >= std::size(kSeverityOfLevel)) {
        return Mistake("550 There are the levels 0 to 7");
    }
    message_.severity = kSeverityOfLevel[level];
    return Ok();
}

SnppAnswer SnppDialogue::Subject(const std::string& argument) {
    subject_ = argument.substr(0, kLongestSubject);
    return Ok();
}

SnppAnswer SnppDialogue::Caller(const std::string& argument) {
    message_.from = argument.substr(0, kLongestSubject);
    return Ok();
}

SnppAnswer SnppDialogue::Alert(const std::string& argument) {
    return argument == "0" || argument == "1" ? Say("250 OK, as the pager is set")
                                              : Mistake("550 ALERt takes 0 or 1");
}

SnppAnswer SnppDialogue::Coverage(const std::string&) {
    return Mistake("550 There are no areas here");
}

// Who wants to be paged in the morning is not to be paged now.
SnppAnswer SnppDialogue::Hold(const std::string&) {
    return Mistake("550 Nothing is held here");
}

SnppAnswer SnppDialogue::TwoWay(const std::string&) {
    two_way_ = true;
    return Ok();
}

SnppAnswer SnppDialogue::Send(const std::string&) {
    if (message_.to.empty() || !has_text_) {
        return Mistake("503 PAGEr and MESSage, or DATA, have to come first");
    }
    SnppMessage message = message_;
    message.text = (subject_.empty() ? "" : subject_ + ": ") + message_.text;
    message.from = message_.from.empty() ? who_ : message_.from;
    const SnppTag tag = desk_.Send(message);
    const std::string told = tag.number + " " + tag.pass;
    const bool two_way = two_way_;
    Reset("");
    return Say(two_way ? "960 " + told + " OK, it is kept and will be sent"
                       : "250 OK, it is kept and will be sent; its tag is " + told);
}

SnppAnswer SnppDialogue::Status(const std::string& argument) {
    SnppTag tag{"", argument};
    tag.number = FirstWordOf(tag.pass);
    const std::optional<SnppStatus> status = desk_.StatusOf(tag);
    return status ? Say(std::string(CodeOf(status->kind)) + " 1 " + Instant(status->at) + " " +
                        status->words)
                  : Mistake("550 There is no message of this tag and pass code");
}

SnppAnswer SnppDialogue::Reset(const std::string&) {
    message_ = {};
    subject_.clear();
    has_text_ = false;
    two_way_ = false;
    return Ok();
}

SnppAnswer SnppDialogue::Help(const std::string&) {
    SnppAnswer answer;
    for (const Step& step : kSteps) {
        answer.text += std::string("214 ") + step.help + "\r\n";
    }
    answer.text += "250 That is all\r\n";
    return answer;
}

SnppAnswer SnppDialogue::Quit(const std::string&) {
    return {"221 Good-bye\r\n", true};
}

}  // namespace host
