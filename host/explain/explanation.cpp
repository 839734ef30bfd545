// Explaining one page. Tested by tests/unit/host/explanation_test.cpp, and by tests/e2e, which
// compare the explanation with what goes over the line.
#include "host/explain/explanation.h"

#include "engine/page_text.h"
#include "host/explain/fields.h"
#include "linux/XStringArray.h"
#include "linux/tty.h"
#include "modem/dialogue_texts.h"
#include "modem/line_mode.h"
#include "modem/protocol_group.h"

namespace host {
namespace {

const char* TextOrEmpty(const char* text) {
    return text != nullptr ? text : "";
}

std::string Quoted(const std::string& bytes) {
    return mkprint(bytes.data(), static_cast<int32_t>(bytes.size()));
}

// The alarm of a test page, but for its details.
class TestAlarm {
 public:
    explicit TestAlarm(const std::string& details) {
        for (const char* name : {"Critical", "Major", "Minor", "Informational", "Unknown"}) {
            severity_names_.SetAtGrow(severity_names_.GetSize(), name);
        }
        source_ = {"TEST/000", "TESTSERVER", details.c_str(), kInformational, &severity_names_, 0};
    }
    TestAlarm(const TestAlarm&) = delete;
    TestAlarm& operator=(const TestAlarm&) = delete;

    const PageSource& Source() const { return source_; }

 private:
    static constexpr int32_t kInformational = 4;

    CStringArray severity_names_;
    PageSource source_{};
};

// The name of the protocol that an SMS page goes by; empty for the other pager types.
std::string SmsProtocolName(const ::Pager& pager, const ComPort& port) {
    switch (pager.pagerType) {
        case kFirstSmsService:
            return BytesOf(port.modemSet->sms1Protocol);
        case kSecondSmsService:
            return BytesOf(port.modemSet->sms2Protocol);
        default:
            return {};
    }
}

std::string TypeName(const ::Pager& pager, const ComPort& port) {
    const std::string protocol = Quoted(SmsProtocolName(pager, port));
    switch (pager.pagerType) {
        case kSignalPager:
            return "signal pager";
        case kNumericPager:
            return "numeric pager";
        case kAlphanumericPager:
            return "alphanumeric pager";
        case kNTTPager:
            return "NTT pager";
        case kFirstSmsService:
            return "first SMS service, " + protocol;
        case kSecondSmsService:
            return "second SMS service, " + protocol;
        default:
            return "unknown pager type " + std::to_string(pager.pagerType);
    }
}

ExplainedStep Step(const char* what, const std::string& bytes, const char* meaning) {
    return {what, {{bytes, meaning}}};
}

ExplainedStep DialStep(const ComPort& port, unsigned char protocol, const PageContent& page) {
    const char* const what =
        page.waitForConnect ? "dial; then 120 s for CONNECT" : "dial; then 120 s for OK";
    const std::string command = BytesOf(DialCommand(*port.modemSet, protocol, ""));
    ExplainedStep step{what, {}};
    for (const ExplainedPiece& piece :
         {ExplainedPiece{command, "the port's dial command"},
          ExplainedPiece{BytesOf(page.dialPrefix), "what the pager adds to it"},
          ExplainedPiece{"\r", "end of the command"}}) {
        if (!piece.bytes.empty()) {
            step.pieces.push_back(piece);
        }
    }
    return step;
}

void AddTap(std::vector<ExplainedStep>& steps, const PageContent& page) {
    steps.push_back(Step("knock, up to three times; then 30 s for ID=", std::string(kTapKnock),
                         "carriage return, and the zero byte behind it"));
    steps.push_back(Step("log on; then 30 s for <esc>[p<cr>", kTapLogOn, "automatic dispatch"));
    steps.push_back(TapBlockFields(page.number, page.message));
    steps.push_back(
        Step("log off; then 30 s for <esc><eot>", kTapEndOfTransmission, "end of transmission"));
}

void AddPlain(std::vector<ExplainedStep>& steps, const PageContent& page, const ComPort& port) {
    const std::string prompt = Quoted(BytesOf(port.modemSet->activityPrompt));
    const std::string forPrompt = "; then 30 s for " + prompt;
    steps.push_back({"yes, only if the service asked while the call was set up" + forPrompt,
                     {{std::string(kPlainYes) + "\r", "the German and the English yes"}}});
    steps.push_back({"the number" + forPrompt, {{BytesOf(page.number) + "\r", "pager number"}}});
    if (!page.message.IsEmpty()) {
        steps.push_back(Step("the text", BytesOf(page.message) + "\r", "text"));
    }
    steps.push_back(Step("confirm; then up to 30 s for the service to hang up",
                         std::string(kPlainYes) + "\r", "the German and the English yes"));
}

// Whether the far end gets the low seven bits only.
bool LosesEighthBit(const ::Pager& pager, const ComPort& port) {
    const ProtocolGroup* const group =
        FindProtocolGroup(static_cast<unsigned char>(pager.pagerType));
    return SmsProtocolName(pager, port) == "UCP" ||
           (group != nullptr && port.*group->data != "8" && pager.pagerType != kNTTPager);
}

bool TakesTheAlarmText(int32_t pagerType) {
    return pagerType == kAlphanumericPager || pagerType == kFirstSmsService ||
           pagerType == kSecondSmsService;
}

std::string CutNote(size_t kept, size_t whole) {
    return "only " + std::to_string(kept) + " of " + std::to_string(whole) +
           " characters of the text are sent";
}

void AddNotes(std::vector<std::string>& notes, const ::Pager& pager, const ComPort& port,
              const std::string& text, const std::string& alarmText) {
    if (TakesTheAlarmText(pager.pagerType) && text.size() < alarmText.size()) {
        notes.push_back(CutNote(text.size(), alarmText.size()));
    }
    if (pager.pagerType == kNTTPager && text.size() > kNttBytes) {
        notes.push_back(CutNote(kNttBytes, text.size()));
    }
    std::string arrives = text;
    for (char& c : arrives) {
        c = static_cast<char>(c & 0x7F);
    }
    if (arrives != text && LosesEighthBit(pager, port)) {
        notes.push_back("only seven bits of each character arrive: " + Quoted(arrives));
    }
}

}  // namespace

std::string ExplainedStep::Bytes() const {
    std::string bytes;
    for (const ExplainedPiece& piece : pieces) {
        bytes += piece.bytes;
    }
    return bytes;
}

Explanation ExplainPage(const ::Pager& pager, const ComPort& port, const std::string& details) {
    const auto protocol = static_cast<unsigned char>(pager.pagerType);
    const TestAlarm alarm(details);
    const PageContent page =
        ComposePage(pager.pagerType, TextOrEmpty(pager.pagerNumber), alarm.Source());
    const std::string sms = SmsProtocolName(pager, port);

    Explanation explanation;
    explanation.type = TypeName(pager, port);
    explanation.mode = Quoted(BytesOf(ModeText(DeviceName(port.name), port, protocol)));
    explanation.settings = Quoted(BytesOf(SettingsText(port, protocol)));
    explanation.steps.push_back(DialStep(port, protocol, page));
    if (page.number.IsEmpty()) {
        explanation.notes.emplace_back("the call itself is the page; nothing is transferred");
    } else if (sms == "TAP") {
        AddTap(explanation.steps, page);
    } else if (sms == "UCP") {
        explanation.steps.push_back(UcpFrameFields(page.number, page.message));
    } else if (pager.pagerType == kNTTPager) {
        explanation.steps.push_back(NttCommandFields(page.message));
    } else if (pager.pagerType >= kSignalPager && pager.pagerType <= kAlphanumericPager) {
        AddPlain(explanation.steps, page, port);
    } else {
        explanation.notes.emplace_back(
            "nothing is sent, and success is reported: no such pager type or protocol");
    }
    AddNotes(explanation.notes, pager, port, BytesOf(page.message),
             BytesOf(AlarmText(alarm.Source())));
    return explanation;
}

}  // namespace host
