// Explaining one page. Tested by tests/unit/host/explanation_test.cpp, and by tests/e2e, which
// compare the explanation with what goes over the line.
#include "host/explain/explanation.h"

#include "engine/page_text.h"
#include "host/explain/fields.h"
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

// What the pager's user won't hear of the alarm; null where the text is sent.
const char* NoteOnContent(const PageContent& page, int32_t pagerType) {
    if (page.number.IsEmpty()) {
        return "the call itself is the page; nothing is transferred";
    }
    switch (pagerType) {
        case kSignalPager:
        case kNumericPager:
            return "nothing of the alarm is sent, only that there is one";
        case kNTTPager:
            return "of the alarm, only the number of its severity and its server are sent";
        default:
            return nullptr;
    }
}

void AddNotes(std::vector<std::string>& notes, const ::Pager& pager, const ComPort& port,
              const std::string& text, const PagedAlarm& alarm) {
    if (const std::optional<TextCut> cut = CutOf(pager.pagerType, alarm)) {
        notes.push_back("only " + std::to_string(cut->kept) + " of " + std::to_string(cut->whole) +
                        " characters of the text are sent");
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

Explanation ExplainPage(const ::Pager& pager, const ComPort& port, const PagedAlarm& alarm) {
    const auto protocol = static_cast<unsigned char>(pager.pagerType);
    const AlarmSource source(alarm);
    const PageContent page =
        ComposePage(pager.pagerType, TextOrEmpty(pager.pagerNumber), source.Source());
    const std::string sms = SmsProtocolName(pager, port);

    Explanation explanation;
    explanation.type = TypeName(pager, port);
    explanation.mode = Quoted(BytesOf(ModeText(DeviceName(port.name), port, protocol)));
    explanation.settings = Quoted(BytesOf(SettingsText(port, protocol)));
    explanation.steps.push_back(DialStep(port, protocol, page));
    if (const char* const note = NoteOnContent(page, pager.pagerType)) {
        explanation.notes.emplace_back(note);
    }
    if (page.number.IsEmpty()) {
        return explanation;
    }
    if (sms == "TAP") {
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
    AddNotes(explanation.notes, pager, port, BytesOf(page.message), alarm);
    return explanation;
}

}  // namespace host
