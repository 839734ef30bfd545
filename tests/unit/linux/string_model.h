// A model to hold CString against.
#ifndef PAGERFWD_TESTS_UNIT_LINUX_STRING_MODEL_H
#define PAGERFWD_TESTS_UNIT_LINUX_STRING_MODEL_H

#include <memory>
#include <string>

// What the C functions see of a text.
inline std::string UpToNul(const std::string& text) {
    return text.substr(0, text.find('\0'));
}

// What a CString should be: the same operations, told as plainly as can be on std::string, with
// nothing of the implementation's in it. It knows the text, who shares it and how much room it has.
class StringModel {
 public:
    StringModel() = default;
    explicit StringModel(const std::string& text);
    StringModel(const StringModel& other);
    StringModel& operator=(const StringModel& other);
    ~StringModel() = default;

    std::string Text() const;
    size_t Length() const { return Text().size(); }
    size_t Room() const;
    long Sharers() const;  // -1: locked, or the shared empty text
    bool SharesWith(const StringModel& other) const { return buffer_ == other.buffer_; }
    bool IsLocked() const { return buffer_ && buffer_->locked; }

    void Assign(const std::string& text);
    void Append(const std::string& text);
    void SetAt(size_t index, char character);
    void Reserve(size_t room);                // GetBuffer
    void WriteOver(const std::string& text);  // into the buffer, then ReleaseBuffer
    void FreeExtra();
    void Lock();
    void Unlock();

    int Find(char character, int start) const;
    int Find(const std::string& wanted, int start) const;
    int ReverseFind(char character) const;
    int FindOneOf(const std::string& set) const;
    StringModel Mid(int first, int count) const;
    StringModel Right(int count) const;

    int Insert(int index, const std::string& text);
    int Delete(int index, int count);
    int Replace(char before, char after);
    int Replace(const std::string& before, const std::string& after);
    int Remove(char character);
    void TrimLeft(const std::string& set);
    void TrimRight(const std::string& set);
    void Print(const std::string& text, size_t reserved);

 private:
    struct Buffer {
        std::string text;
        size_t room;
        bool locked = false;
    };

    bool IsPrivate() const { return buffer_ && buffer_.use_count() == 1; }
    void Rebuild(const std::string& text, size_t room);
    void ChangeInPlace(const std::string& text);
    void ChangeOrRebuild(const std::string& text);

    std::shared_ptr<Buffer> buffer_;  // none: the shared empty text
};

#endif
