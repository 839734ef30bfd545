// Which dialogue a transfer holds, and what becomes of its result.

#include "tests/dialogue/modem_dialogue.h"

namespace {

using ::testing::ElementsAre;

constexpr std::string_view kAck =
    "\x02"
    "03/00019/R/51/A//6B\x03";

class Transfer : public ModemDialogue {
 protected:
    // The service of this selector, which speaks UCP, is sent just this text.
    void ExpectSent(const std::string& text, unsigned char protocol, const std::string& message) {
        constexpr size_t kFrameWithoutText = 59;  // to the number "12"
        const size_t before = line.Heard().size();
        line.HearsAnything(kFrameWithoutText + 2 * text.size()).Says(kAck);
        EXPECT_EQ(kDone, TransferBy(protocol, "12", message));
        const std::string frame = line.Heard().substr(before);
        EXPECT_NE(std::string::npos, frame.find("3//" + Hex(text) + "/////")) << frame;
        EXPECT_EQ("", line.Verdict());
    }

 private:
    static std::string Hex(const std::string& text) {
        std::string hex;
        for (const char c : text) {
            hex += "0123456789ABCDEF"[c >> 4];
            hex += "0123456789ABCDEF"[c & 0xF];
        }
        return hex;
    }
};

TEST_F(Transfer, OfAnUnknownSelectorSendsNothingAndSucceeds) {
    Open();
    for (const int protocol : {6, 9, 255}) {
        test_support::ForgetTrace();
        EXPECT_EQ(kDone, TransferBy(static_cast<unsigned char>(protocol), "123", "ABC"));
        EXPECT_THAT(test_support::TraceEntries(),
                    ElementsAre("TransMsg( int 0, CString 123, CString ABC, int " +
                                std::to_string(protocol) + " ) L:%d %s"));
    }
    EXPECT_EQ("", line.Heard());
    EXPECT_THAT(Elapsed(), IsAbout(0ms));
}

TEST_F(Transfer, ByAnUnknownSmsProtocolSendsNothingAndSucceeds) {
    Open();
    for (const char* name : {"tap", "ucp", "Tap", "TAP ", " UCP", "TAPI", "SMPP", ""}) {
        Modem().sms1Protocol = name;
        Modem().sms2Protocol = name;
        EXPECT_EQ(kDone, TransferBy(kFirstSmsService, "123", "ABC")) << name;
        EXPECT_EQ(kDone, TransferBy(kSecondSmsService, "123", "ABC")) << name;
    }
    EXPECT_THAT(test_support::TraceEntries(), ::testing::SizeIs(16)) << "the entry lines only";
    EXPECT_EQ("", line.Heard());
    EXPECT_THAT(Elapsed(), IsAbout(0ms));
}

TEST_F(Transfer, OfEachServiceIsByItsOwnProtocol) {
    Open();
    Modem().sms1Protocol = "UCP";
    Modem().sms2Protocol = "TAP";
    line.HearsAnything(65).Says(kAck);
    EXPECT_EQ(kDone, TransferBy(kFirstSmsService, "0123", "Hi"));
    EXPECT_EQ('\x02', line.Heard()[0]);

    line.Hears("\r\0"_bytes).Says("ID=").Hears("\x1BPG1\r\n").Says("\x1B[p\r");
    line.Hears(
            "\x02"
            "123\rABC\r\x03"
            "17;\r")
        .Says("\r\x06\r");
    line.Hears("\x04\r").Says("\x1B\x04");
    EXPECT_EQ(kDone, TransferBy(kSecondSmsService, "123", "ABC"));
    EXPECT_EQ("", line.Verdict());
}

TEST_F(Transfer, CutsAnSmsWhereTheServicesSwitchIsOn) {
    Open();
    Modem().sms1Protocol = "UCP";
    Modem().sms2Protocol = "UCP";
    const std::string message = std::string(79, 'x') + "y" + std::string(20, 'z');
    const std::string cut = std::string(79, 'x') + "y";

    Modem().sms1Cut80 = "1";
    ExpectSent(cut, kFirstSmsService, message);
    ExpectSent(message, kSecondSmsService, message);
    Modem().sms1Cut80 = "0";
    Modem().sms2Cut80 = "1";
    ExpectSent(message, kFirstSmsService, message);
    ExpectSent(cut, kSecondSmsService, message);
}

TEST_F(Transfer, SendsAnSmsWholeForAnyOtherSwitch) {
    Open();
    Modem().sms1Protocol = "UCP";
    const std::string message(100, 'x');
    for (const char* off : {"", "0", "11", " 1", "yes"}) {
        SCOPED_TRACE(off);
        Modem().sms1Cut80 = off;
        ExpectSent(message, kFirstSmsService, message);
    }
}

TEST_F(Transfer, CutsOnlyWhatIsLonger) {
    Open();
    Modem().sms1Protocol = "UCP";
    Modem().sms1Cut80 = "1";
    const std::string message(80, 'x');
    ExpectSent(message, kFirstSmsService, message);
    ExpectSent("ab", kFirstSmsService, "ab");
}

TEST_F(Transfer, TracesTheWholeMessageAlsoWhenItIsCut) {
    Open();
    Modem().sms1Protocol = "UCP";
    Modem().sms1Cut80 = "1";
    const std::string message(100, 'x');
    ExpectSent(message.substr(0, 80), kFirstSmsService, message);
    EXPECT_EQ("TransMsg( int 0, CString 12, CString " + message + ", int 4 ) L:%d %s",
              Milestones()[0]);
}

TEST_F(Transfer, NeedsNoPlaceForItsResult) {
    Open(kSecondSmsService);
    line.HearsAnything(65).Says(kAck);
    EXPECT_TRUE(handler->TransMsg(0, "0123", "Hi", kSecondSmsService, nullptr));
    faults::FailWrite(1);
    EXPECT_FALSE(handler->TransMsg(0, "0123", "Hi", kSecondSmsService, nullptr));
}

}  // namespace
