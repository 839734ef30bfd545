// The model that CString is held against, told from what its operations promise.

#include "tests/unit/linux/string_model.h"

#include <algorithm>

namespace {

int Clamp(int value, size_t limit) {
    return std::min(std::max(value, 0), static_cast<int>(limit));
}

// The C functions that search see a text up to its first NUL.
std::string Seen(const std::string& text, int start) {
    return UpToNul(text.substr(static_cast<size_t>(start)));
}

int Index(size_t found, int start) {
    return found == std::string::npos ? -1 : static_cast<int>(found) + start;
}

}  // namespace

StringModel::StringModel(const std::string& text) {
    Rebuild(text, text.size());
}

StringModel::StringModel(const StringModel& other) {
    if (other.Length() == 0) {
        return;
    }
    if (other.IsLocked()) {
        Rebuild(other.Text(), other.Length());
    } else {
        buffer_ = other.buffer_;
    }
}

StringModel& StringModel::operator=(const StringModel& other) {
    if (buffer_ == other.buffer_) {
        return *this;
    }
    if (other.IsLocked()) {
        Assign(other.Text());
    } else {
        buffer_ = StringModel(other).buffer_;
    }
    return *this;
}

std::string StringModel::Text() const {
    return buffer_ ? buffer_->text : "";
}

size_t StringModel::Room() const {
    return buffer_ ? buffer_->room : 0;
}

long StringModel::Sharers() const {
    return !buffer_ || buffer_->locked ? -1 : buffer_.use_count();
}

// Another buffer, or none for no room.
void StringModel::Rebuild(const std::string& text, size_t room) {
    buffer_ = room > 0 ? std::make_shared<Buffer>(Buffer{text, room}) : nullptr;
}

// In a private buffer; a shared one is copied at its own length first. An empty text gives up its
// buffer.
void StringModel::ChangeInPlace(const std::string& text) {
    if (text.empty()) {
        buffer_ = nullptr;
    } else if (IsPrivate()) {
        buffer_->text = text;
    } else {
        Rebuild(text, Length());
    }
}

// In place where private and large enough, else exactly as large as needed.
void StringModel::ChangeOrRebuild(const std::string& text) {
    if (IsPrivate() && text.size() <= Room()) {
        ChangeInPlace(text);
    } else {
        Rebuild(text, text.size());
    }
}

void StringModel::Assign(const std::string& text) {
    ChangeOrRebuild(text);
}

void StringModel::Append(const std::string& text) {
    if (!text.empty()) {
        ChangeOrRebuild(Text() + text);
    }
}

void StringModel::SetAt(size_t index, char character) {
    std::string text = Text();
    text[index] = character;
    ChangeInPlace(text);
}

void StringModel::Reserve(size_t room) {
    if (buffer_ && !IsPrivate()) {
        Rebuild(Text(), std::max(room, Length()));
    } else if (room > Room()) {
        Rebuild(Text(), room);
    }
}

void StringModel::WriteOver(const std::string& text) {
    Reserve(text.size());
    ChangeInPlace(text);
}

void StringModel::FreeExtra() {
    if (buffer_ && !IsLocked() && Room() > Length()) {
        Rebuild(Text(), Length());
    }
}

void StringModel::Lock() {
    Reserve(0);
    if (buffer_) {
        buffer_->locked = true;
    }
}

void StringModel::Unlock() {
    if (buffer_) {
        buffer_->locked = false;
    }
}

int StringModel::Find(char character, int start) const {
    start = std::max(start, 0);
    if (start >= static_cast<int>(Length())) {
        return -1;
    }
    const std::string seen = Seen(Text(), start);
    return character == '\0' ? Index(seen.size(), start) : Index(seen.find(character), start);
}

int StringModel::Find(const std::string& wanted, int start) const {
    start = std::max(start, 0);
    if (start > static_cast<int>(Length())) {
        return -1;
    }
    return Index(Seen(Text(), start).find(wanted), start);
}

int StringModel::ReverseFind(char character) const {
    const std::string seen = Seen(Text(), 0);
    return character == '\0' ? Index(seen.size(), 0) : Index(seen.rfind(character), 0);
}

int StringModel::FindOneOf(const std::string& set) const {
    for (char each : set) {
        const size_t found = Seen(Text(), 0).find(each);
        if (found != std::string::npos) {
            return Index(found, 0);
        }
    }
    return -1;
}

StringModel StringModel::Mid(int first, int count) const {
    if (first >= static_cast<int>(Length())) {
        return StringModel();
    }
    const auto from = static_cast<size_t>(std::max(first, 0));
    const std::string part = Text().substr(from, static_cast<size_t>(std::max(count, 0)));
    return part == Text() ? *this : StringModel(part);
}

StringModel StringModel::Right(int count) const {
    const int taken = Clamp(count, Length());
    return Mid(static_cast<int>(Length()) - taken, taken);
}

int StringModel::Insert(int index, const std::string& text) {
    std::string whole = Text();
    whole.insert(static_cast<size_t>(Clamp(index, Length())), text);
    if (!text.empty()) {
        ChangeOrRebuild(whole);
    }
    return static_cast<int>(Length());
}

int StringModel::Delete(int index, int count) {
    const int before = static_cast<int>(Length());
    index = std::max(index, 0);
    if (count >= 1 && index < before) {
        std::string text = Text();
        text.erase(static_cast<size_t>(index), static_cast<size_t>(count));
        ChangeInPlace(text);
    }
    return before;
}

int StringModel::Replace(char before, char after) {
    std::string text = Text();
    int replaced = 0;
    for (char& each : text) {
        if (each == before) {
            each = after;
            ++replaced;
        }
    }
    if (replaced > 0) {
        ChangeInPlace(text);
    }
    return replaced;
}

int StringModel::Replace(const std::string& before, const std::string& after) {
    std::string text = Text();
    int replaced = 0;
    size_t at = 0;
    while (!before.empty() && (at = text.find(before, at)) != std::string::npos) {
        text.replace(at, before.size(), after);
        at += after.size();
        ++replaced;
    }
    if (replaced > 0) {
        Rebuild(text, text.size());
    }
    return replaced;
}

int StringModel::Remove(char character) {
    std::string text;
    for (char each : Text()) {
        if (each != character) {
            text += each;
        }
    }
    const int removed = static_cast<int>(Length() - text.size());
    if (removed > 0) {
        ChangeInPlace(text);
    }
    return removed;
}

void StringModel::TrimLeft(const std::string& set) {
    const std::string text = Text();
    const size_t first = std::min(text.find_first_not_of(set), text.size());
    if (first > 0) {
        ChangeInPlace(text.substr(first));
    }
}

void StringModel::TrimRight(const std::string& set) {
    const std::string text = Text();
    const size_t length = text.find_last_not_of(set) + 1;
    if (length < text.size()) {
        ChangeInPlace(text.substr(0, length));
    }
}

void StringModel::Print(const std::string& text, size_t reserved) {
    buffer_ = nullptr;
    if (!text.empty()) {
        Rebuild(text, reserved);
    }
}
