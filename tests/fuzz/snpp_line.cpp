// What a client of SNPP says: any bytes are lines, each is answered as the protocol has it, and
// none but what is sent asks the database, which isn't there.
#include <sstream>
#include <string>

#include "host/snpp/address_list.h"
#include "host/snpp/command.h"
#include "host/snpp/dialogue.h"
#include "tests/fuzz/input.h"

namespace {

using fuzz::Expect;

void CheckLine(std::string_view line) {
    const host::SnppCommand command = host::ParseSnppLine(line);
    Expect(command.name.size() <= 4, "four letters count");
    Expect(command.argument.size() <= line.size(), "an argument is what came");
    for (const char c : command.name) {
        Expect(c < 'a' || c > 'z', "a command is in capitals");
    }
}

void CheckAnswer(const std::string& text) {
    Expect(text.size() < 4096, "an answer has a bound");
    for (size_t at = 0; at < text.size(); at = text.find("\r\n", at) + 2) {
        Expect(text.size() - at > 5 && text.find("\r\n", at) != std::string::npos,
               "an answer is of whole lines");
        Expect(text[at] >= '2' && text[at] <= '9' && text[at + 3] == ' ', "a line has its code");
    }
}

void CheckSession(std::string_view bytes, bool may_send) {
    static const host::SnppDesk desk("none.db");
    std::ostringstream said;
    host::OperatorLog log(said, true);
    host::SnppDialogue dialogue(desk, log, "192.0.2.7", may_send);
    while (!bytes.empty()) {
        const size_t end = std::min(bytes.find('\n'), bytes.size());
        CheckLine(bytes.substr(0, end));
        const host::SnppAnswer answer = dialogue.Hear(bytes.substr(0, end));
        CheckAnswer(answer.text);
        if (answer.ends) {
            return;
        }
        bytes.remove_prefix(std::min(end + 1, bytes.size()));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view bytes = fuzz::View(data, size);
    CheckSession(bytes, true);
    CheckSession(bytes, false);
    host::AddressList list;
    if (list.Add(std::string(bytes.substr(0, 64)))) {
        static_cast<void>(list.Has("192.0.2.7"));
        static_cast<void>(list.Has("2001:db8::1"));
    }
    return 0;
}
