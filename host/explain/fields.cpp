// Fields of a TAP block, a UCP frame and an NTT dial command. Tested by
// tests/unit/host/explanation_test.cpp.
#include "host/explain/fields.h"

#include <pagerfwd/text_helpers.h>

#include <algorithm>
#include <utility>

#include "linux/tty.h"
#include "modem/ntt_code.h"
#include "modem/tap_block.h"
#include "modem/ucp_frame.h"

namespace host {
namespace {

// Takes one field after the other from the front, so that none of the bytes is lost or made up.
class Cutter {
 public:
    Cutter(std::string what, std::string bytes) : rest_(std::move(bytes)) {
        step_.what = std::move(what);
    }

    Cutter& Take(size_t count, std::string meaning) {
        if (count > 0) {
            step_.pieces.push_back({rest_.substr(0, count), std::move(meaning)});
            rest_.erase(0, count);
        }
        return *this;
    }

    ExplainedStep Done() {
        Take(rest_.size(), "");
        return std::move(step_);
    }

 private:
    ExplainedStep step_;
    std::string rest_;
};

size_t LengthOf(const CString& text) {
    return static_cast<size_t>(text.GetLength());
}

// What a code of two digits stands for, as the pager shows it.
std::string ShownByPager(const std::string& character, const std::string& code) {
    constexpr const char* kQuestionMark = "67";
    return code == kQuestionMark
               ? "shown as a question mark"
               : mkprint(character.data(), static_cast<int32_t>(character.size()));
}

}  // namespace

std::string BytesOf(const CString& text) {
    return {static_cast<const char*>(text), LengthOf(text)};
}

ExplainedStep TapBlockFields(const CString& number, const CString& text) {
    return Cutter("the block; then 30 s for <cr><ack><cr>", BytesOf(CreateD1Block(number, text)))
        .Take(1, "start")
        .Take(LengthOf(number), "pager number")
        .Take(1, "end of the field")
        .Take(LengthOf(text), "text")
        .Take(1, "end of the field")
        .Take(1, "end of the block's text")
        .Take(3, "checksum: the low seven bits of all bytes so far, added up")
        .Take(1, "end")
        .Done();
}

ExplainedStep UcpFrameFields(const CString& number, const CString& text) {
    return Cutter("the frame, after a pause of 13 s; then 30 s for /A/",
                  BytesOf(CreateUCPFrame(number, text)))
        .Take(1, "start")
        .Take(3, "transaction number")
        .Take(6, "characters between start and end")
        .Take(5, "operation 51, submit short message")
        .Take(LengthOf(number) + 1, "recipient")
        .Take(6, "originator")
        .Take(16, "sixteen empty fields")
        .Take(2, "message type: alphanumeric")
        .Take(1, "number of bits: empty")
        .Take(2 * LengthOf(text) + 1, "text, the low seven bits of each character in hexadecimal")
        .Take(12, "twelve empty fields")
        .Take(2, "checksum: all characters behind the start, added up")
        .Take(1, "end")
        .Done();
}

ExplainedStep NttCommandFields(const CString& text) {
    const std::string message = BytesOf(text).substr(0, kNttBytes);
    const std::string command = BytesOf(NTTDialCommand(text));
    Cutter cutter("the text, dialled as tones after a pause of 20 s; then 120 s for OK",
                  command + "\r");
    cutter.Take(4, "dial by tones").Take(4, "a text follows");
    for (size_t at = 0; at < message.size();) {
        const auto* const character = reinterpret_cast<const unsigned char*>(message.c_str() + at);
        const size_t size = std::max<size_t>(_mbclen(character), 1);
        const std::string code = BytesOf(CCOMHdl::FormatNTT(message.substr(at, size).c_str()));
        cutter.Take(2, ShownByPager(message.substr(at, size), code));
        at += size;
    }
    return cutter.Take(2, "end of the text").Take(1, "the modem takes commands again").Done();
}

}  // namespace host
