// From bytes to entries. Tested by tests/unit/host/trace_entries_test.cpp.
#include <algorithm>
#include <cctype>
#include <utility>

#include "host/trace/trace_entry.h"

namespace host {
namespace {

constexpr std::string_view kStampForm = "dd:dd:dd\t";

bool FitsStamp(char c, char form) {
    const auto byte = static_cast<unsigned char>(c);
    return form == 'd' ? std::isdigit(byte) != 0 || byte == ' ' : c == form;
}

bool MayBeStamp(std::string_view begin) {
    return std::equal(begin.begin(), begin.end(), kStampForm.begin(), FitsStamp);
}

int Number(char tens, char units) {
    return (tens == ' ' ? 0 : tens - '0') * 10 + (units - '0');
}

// kNoTime where the digits mean no time.
int SecondOf(std::string_view stamp) {
    if (stamp[1] == ' ' || stamp[4] == ' ' || stamp[7] == ' ') {
        return TraceEntry::kNoTime;
    }
    const int hour = Number(stamp[0], stamp[1]);
    const int minute = Number(stamp[3], stamp[4]);
    const int second = Number(stamp[6], stamp[7]);
    const bool valid = hour < 24 && minute < 60 && second <= 60;  // 60: a leap second
    return valid ? (hour * 60 + minute) * 60 + std::min(second, 59) : TraceEntry::kNoTime;
}

}  // namespace

void EntrySplitter::Feed(std::string_view bytes) {
    while (!bytes.empty()) {
        const size_t end = bytes.find('\n');
        const size_t size = end == std::string_view::npos ? bytes.size() : end + 1;
        TakePiece(bytes.substr(0, size));
        bytes.remove_prefix(size);
    }
}

// A part of one line, with its line feed if it is the last part.
void EntrySplitter::TakePiece(std::string_view piece) {
    if (!in_line_) {
        ++lines_;
        decided_ = false;
    }
    in_line_ = piece.back() != '\n';
    if (!decided_) {
        const size_t wanted = std::min(kStampForm.size() - line_begin_.size(), piece.size());
        line_begin_ += piece.substr(0, wanted);
        piece.remove_prefix(wanted);
        if (line_begin_.size() == kStampForm.size() || !MayBeStamp(line_begin_)) {
            Decide();
        }
    }
    Keep(piece);
}

// Whether the line begins an entry or goes on with one.
void EntrySplitter::Decide() {
    decided_ = true;
    const bool complete = line_begin_.size() == kStampForm.size() && MayBeStamp(line_begin_);
    const int second = complete ? SecondOf(line_begin_) : TraceEntry::kNoTime;
    const std::string begin = std::exchange(line_begin_, {});
    if (second != TraceEntry::kNoTime) {
        Give();
        Begin(second);
        return;
    }
    if (!open_) {
        Begin(TraceEntry::kNoTime);
    }
    Keep(begin);
}

void EntrySplitter::Begin(int second) {
    open_ = true;
    entry_.line = lines_;
    entry_.second = second;
    text_.clear();
    end_.clear();
    size_ = 0;
    ends_line_ = false;
}

void EntrySplitter::Keep(std::string_view bytes) {
    if (bytes.empty()) {
        return;
    }
    size_ += bytes.size();
    ends_line_ = bytes.back() == '\n';
    const std::string_view begin = bytes.substr(0, kKept - kEndKept - text_.size());
    text_ += begin;
    bytes.remove_prefix(begin.size());
    end_ += bytes.substr(bytes.size() - std::min(bytes.size(), kEndKept));
    end_.erase(0, end_.size() - std::min(end_.size(), kEndKept));
}

void EntrySplitter::Give() {
    if (open_) {
        open_ = false;
        text_ += end_;
        entry_.left_out = size_ - text_.size();
        entry_.text = std::string_view(text_).substr(0, text_.size() - (ends_line_ ? 1 : 0));
        give_(entry_);
    }
}

void EntrySplitter::Pause() {
    if (!in_line_) {
        Give();
    }
}

void EntrySplitter::Finish() {
    if (!decided_) {
        Decide();
    }
    Give();
    in_line_ = false;
    lines_ = 0;
}

}  // namespace host
