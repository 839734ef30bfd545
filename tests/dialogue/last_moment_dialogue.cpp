// Answers that come at the last moment of a wait, and just too late, for every answer that a page
// waits for.

#include <ostream>
#include <vector>

#include "tests/dialogue/modem_dialogue.h"

namespace {

// One turn of a dialogue: what the library sends, then what comes back.
struct Turn {
    std::string_view heard;
    std::string_view said;
    std::chrono::milliseconds limit;  // of the wait for it
};

struct Dialogue {
    const char* name;
    unsigned char protocol;
    const char* number;
    const char* message;
    std::vector<Turn> turns;
};

const std::vector<Dialogue>& Dialogues() {
    static const std::vector<Dialogue> dialogues = {
        {"Tap",
         kFirstSmsService,
         "123",
         "ABC",
         {{"\r\0"_bytes, "ID=", 30s},
          {"\x1BPG1\r\n", "\x1B[p\r", 30s},
          {"\x02"
           "123\rABC\r\x03"
           "17;\r",
           "\r\x06\r", 30s},
          {"\x04\r", "\x1B\x04\r", 30s}}},
        {"Ucp",
         kSecondSmsService,
         "0123",
         "Hi",
         {{"\x02"
           "03/00063/O/51/0123/12345/////////////////3//4869/////////////af\x03",
           "/A/", 30s}}},
        {"Plain", kAlphanumericPager, "4711", "Pump", {{"4711\r", "#", 30s}}},
        {"Ntt", kNTTPager, "90;", "ab 1", {{"ATDT*2*216176796##;\r", "\r\nOK\r\n", 120s}}},
    };
    return dialogues;
}

struct Case {
    const Dialogue* dialogue;
    size_t turn;  // whose answer is late
};

std::ostream& operator<<(std::ostream& out, const Case& each) {
    return out << each.dialogue->name << each.turn;
}

std::vector<Case> Cases() {
    std::vector<Case> cases;
    for (const Dialogue& dialogue : Dialogues()) {
        for (size_t turn = 0; turn < dialogue.turns.size(); ++turn) {
            cases.push_back({&dialogue, turn});
        }
    }
    return cases;
}

class LastMoment : public ModemDialogue, public ::testing::WithParamInterface<Case> {
 protected:
    LastMoment() {
        pagersim::VirtualClock::SetStep(1ms);
        Open(GetParam().dialogue->protocol);
    }

    Outcome PageWithAnswerAfter(std::chrono::milliseconds beyond_limit) {
        const Dialogue& dialogue = *GetParam().dialogue;
        for (size_t i = 0; i < dialogue.turns.size(); ++i) {
            const Turn& turn = dialogue.turns[i];
            const bool is_late = i == GetParam().turn;
            line.Hears(turn.heard).Says(turn.said, is_late ? turn.limit + beyond_limit : 0ms);
        }
        if (dialogue.protocol == kAlphanumericPager) {
            line.Hears("Pump\rjy\r").Says("\r\nNO CARRIER\r\n");
        }
        return TransferBy(dialogue.protocol, dialogue.number, dialogue.message);
    }
};

// The wait ends when the clock has passed its limit: at the limit itself it still listens.
TEST_P(LastMoment, IsSoonEnough) {
    EXPECT_EQ(kDone, PageWithAnswerAfter(0ms));
    EXPECT_EQ("", line.Verdict());
}

TEST_P(LastMoment, IsMissed) {
    const bool knocks_again =
        std::string(GetParam().dialogue->name) == "Tap" && GetParam().turn == 0;
    if (knocks_again) {
        // The answer to the first knock is taken for that to the second, which the script misses.
        EXPECT_EQ(Failed(7), PageWithAnswerAfter(2ms));
        EXPECT_EQ("\r\0\r\0"_bytes, line.Heard().substr(0, 4));
        return;
    }
    EXPECT_EQ(Failed(7), PageWithAnswerAfter(2ms));
}

INSTANTIATE_TEST_SUITE_P(EveryAnswer, LastMoment, ::testing::ValuesIn(Cases()),
                         ::testing::PrintToStringParamName());

}  // namespace
