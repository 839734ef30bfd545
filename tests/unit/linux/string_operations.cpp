// The operations of CString, each on the real text and on its model.
#include "tests/unit/linux/string_operations.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string>

namespace string_operations {
namespace {

const std::string kWhiteSpace = " \t\n\v\f\r";

void ExpectToFitItsModel(const Text& text) {
    const CStringData& header = HeaderOf(text.real);
    const auto length = static_cast<size_t>(header.nDataLength);
    const char* characters = text.real;
    EXPECT_EQ(text.model.Text(), std::string(characters, length));
    EXPECT_EQ('\0', characters[length]);
    EXPECT_EQ(text.model.Length(), length);
    EXPECT_EQ(text.model.Room(), static_cast<size_t>(header.nAllocLength));
    EXPECT_EQ(text.model.Sharers(), header.nRefs);
}

}  // namespace

void Texts::KeepShort() {
    for (Text& text : texts_) {
        if (text.model.Length() > kLongest) {
            text.real.Empty();
            text.model = StringModel();
        }
    }
}

void Texts::ExpectToFitTheirModels() const {
    for (const Text& text : texts_) {
        ExpectToFitItsModel(text);
        for (const Text& other : texts_) {
            EXPECT_EQ(text.model.SharesWith(other.model), Share(text.real, other.real));
        }
    }
    EXPECT_EQ(-1, _afxDataNil->nRefs);
    EXPECT_EQ(0, _afxDataNil->nDataLength);
    EXPECT_EQ('\0', *_afxPchNil);
}

namespace {

// ---- The operations

void ConstructFromCharacter(Texts& texts) {
    const char character = texts.Character();
    const int repeat = texts.Upto(6) - 1;
    texts.Same(StringModel(std::string(static_cast<size_t>(std::max(repeat, 0)), character)),
               CString(character, repeat));
}

void ConstructFromText(Texts& texts) {
    const Argument argument = texts.AnyText();
    texts.Same(StringModel(argument.model), CString(argument.real));
}

void ConstructFromTextAndLength(Texts& texts) {
    const std::string characters = texts.Characters(texts.Upto(6));
    texts.Same(StringModel(characters),
               CString(characters.data(), static_cast<int>(characters.size())));
}

void Copy(Texts& texts) {
    const Text& source = texts.Any();
    const StringModel model(source.model);
    texts.Same(model, CString(source.real));
}

void Assign(Texts& texts) {
    const Text& source = texts.Any();
    Text& text = texts.Any();
    text.model = source.model;
    text.real = source.real;
}

void AssignText(Texts& texts) {
    Text& text = texts.Any();
    const Argument argument = texts.AnyText();
    text.model.Assign(argument.model);
    text.real = argument.real;
}

void Append(Texts& texts) {
    const Text& added = texts.Any();
    Text& text = texts.Any();
    text.model.Append(added.model.Text());
    text.real += added.real;
}

void AppendText(Texts& texts) {
    Text& text = texts.Any();
    const Argument argument = texts.AnyText();
    text.model.Append(argument.model);
    text.real += argument.real;
}

StringModel Sum(const StringModel& left, const std::string& right) {
    StringModel sum(left);
    sum.Append(right);
    return sum;
}

void Add(Texts& texts) {
    const Text& left = texts.Any();
    const Text& right = texts.Any();
    texts.Same(Sum(left.model, right.model.Text()), left.real + right.real);
}

void AddText(Texts& texts) {
    const Text& left = texts.Any();
    const Argument right = texts.AnyText();
    texts.Same(Sum(left.model, right.model), left.real + right.real);
}

void AddToText(Texts& texts) {
    const Argument left = texts.AnyText();
    const Text& right = texts.Any();
    texts.Same(Sum(StringModel(left.model), right.model.Text()), left.real + right.real);
}

void Compare(Texts& texts) {
    const Text& left = texts.Any();
    const Text& right = texts.Any();
    const Argument argument = texts.AnyText();
    const std::string seen = UpToNul(left.model.Text());
    const bool isEqual = seen == UpToNul(right.model.Text());
    const bool isEqualText = seen == argument.model;
    texts.Same(isEqual, left.real == right.real);
    texts.Same(!isEqual, left.real != right.real);
    texts.Same(isEqualText, left.real == argument.real);
    texts.Same(!isEqualText, left.real != argument.real);
    texts.Same(isEqualText, argument.real == left.real);
    texts.Same(!isEqualText, argument.real != left.real);
}

void Empty(Texts& texts) {
    Text& text = texts.Any();
    text.model = StringModel();
    text.real.Empty();
}

void GetAt(Texts& texts) {
    const Text& text = texts.AnyNotEmpty();
    const int index = texts.Upto(text.real.GetLength() - 1);
    texts.Same(text.model.Text()[static_cast<size_t>(index)], text.real.GetAt(index));
    texts.Same(text.model.Text()[static_cast<size_t>(index)], text.real[index]);
}

void SetAt(Texts& texts) {
    Text& text = texts.AnyNotEmpty();
    const int index = texts.Upto(text.real.GetLength() - 1);
    const char character = texts.CharacterOrNul();
    text.model.SetAt(static_cast<size_t>(index), character);
    text.real.SetAt(index, character);
}

void GetBuffer(Texts& texts) {
    Text& text = texts.Any();
    const int room = texts.Upto(kLongest);
    text.model.Reserve(static_cast<size_t>(room));
    texts.Same(true, text.real.GetBuffer(room) == Characters(text.real));
}

void ReleaseBuffer(Texts& texts) {
    Text& text = texts.Any();
    const std::string written = texts.Characters(texts.Upto(10));
    const bool byLength = written.empty() || texts.OnceIn(2);
    char* buffer = text.real.GetBuffer(static_cast<int>(written.size()));
    if (!written.empty()) {
        std::memcpy(buffer, written.c_str(), written.size() + 1);
    }
    text.model.Reserve(written.size());
    text.model.WriteOver(byLength ? written : UpToNul(written));
    text.real.ReleaseBuffer(byLength ? static_cast<int>(written.size()) : -1);
}

void GetBufferSetLength(Texts& texts) {
    Text& text = texts.Any();
    const std::string written = texts.Characters(texts.Upto(10));
    char* buffer = text.real.GetBufferSetLength(static_cast<int>(written.size()));
    std::copy(written.begin(), written.end(), buffer);
    text.model.WriteOver(written);
}

void FreeExtra(Texts& texts) {
    Text& text = texts.Any();
    text.model.FreeExtra();
    text.real.FreeExtra();
}

void LockBuffer(Texts& texts) {
    Text& text = texts.Any();
    text.model.Lock();
    texts.Same(true, text.real.LockBuffer() == Characters(text.real));
}

void UnlockBuffer(Texts& texts) {
    Text& text = texts.Any();
    if (!text.model.IsLocked()) {
        text.model.Lock();
        text.real.LockBuffer();
    }
    text.model.Unlock();
    text.real.UnlockBuffer();
}

void FindCharacter(Texts& texts) {
    const Text& text = texts.Any();
    const char character = texts.CharacterOrNul();
    const int start = texts.Number(text);
    texts.Same(text.model.Find(character, 0), text.real.Find(character));
    texts.Same(text.model.Find(character, start), text.real.Find(character, start));
}

void FindText(Texts& texts) {
    const Text& text = texts.Any();
    const Argument argument = texts.AnyText();
    const int start = texts.Number(text);
    texts.Same(text.model.Find(argument.model, 0), text.real.Find(argument.real));
    texts.Same(text.model.Find(argument.model, start), text.real.Find(argument.real, start));
}

void ReverseFind(Texts& texts) {
    const Text& text = texts.Any();
    const char character = texts.CharacterOrNul();
    texts.Same(text.model.ReverseFind(character), text.real.ReverseFind(character));
}

void FindOneOf(Texts& texts) {
    const Text& text = texts.Any();
    const Argument set = texts.AnyText();
    texts.Same(text.model.FindOneOf(set.model), text.real.FindOneOf(set.real));
}

void Mid(Texts& texts) {
    const Text& text = texts.Any();
    const int first = texts.Number(text);
    texts.Same(text.model.Mid(first, kLongest + 10), text.real.Mid(first));
}

void MidWithCount(Texts& texts) {
    const Text& text = texts.Any();
    const int first = texts.Number(text);
    const int count = texts.Number(text);
    texts.Same(text.model.Mid(first, count), text.real.Mid(first, count));
}

void Left(Texts& texts) {
    const Text& text = texts.Any();
    const int count = texts.Number(text);
    texts.Same(text.model.Mid(0, count), text.real.Left(count));
}

void Right(Texts& texts) {
    const Text& text = texts.Any();
    const int count = texts.Number(text);
    texts.Same(text.model.Right(count), text.real.Right(count));
}

void InsertCharacter(Texts& texts) {
    Text& text = texts.Any();
    const int index = texts.Number(text);
    const char character = texts.CharacterOrNul();
    texts.Same(text.model.Insert(index, std::string(1, character)),
               text.real.Insert(index, character));
}

void InsertText(Texts& texts) {
    Text& text = texts.Any();
    const int index = texts.Number(text);
    const Argument argument = texts.AnyText();
    texts.Same(text.model.Insert(index, argument.model), text.real.Insert(index, argument.real));
}

void Delete(Texts& texts) {
    Text& text = texts.Any();
    const int index = texts.Number(text);
    const int remaining = std::max(0, text.real.GetLength() - std::max(index, 0));
    const int count = texts.Upto(remaining + 1) - 1;
    texts.Same(text.model.Delete(index, count), text.real.Delete(index, count));
}

void ReplaceCharacter(Texts& texts) {
    Text& text = texts.Any();
    const char before = texts.CharacterOrNul();
    const char after = texts.CharacterOrNul();
    texts.Same(text.model.Replace(before, after), text.real.Replace(before, after));
}

void ReplaceText(Texts& texts) {
    Text& text = texts.Any();
    const std::string before = texts.AnyText().model;
    const Argument after = texts.AnyText();
    texts.Same(text.model.Replace(before, after.model),
               text.real.Replace(before.c_str(), after.real));
}

void Remove(Texts& texts) {
    Text& text = texts.Any();
    const char character = texts.CharacterOrNul();
    texts.Same(text.model.Remove(character), text.real.Remove(character));
}

void TrimLeft(Texts& texts) {
    Text& text = texts.Any();
    text.model.TrimLeft(kWhiteSpace);
    text.real.TrimLeft();
}

void TrimLeftCharacter(Texts& texts) {
    Text& text = texts.Any();
    const char character = texts.CharacterOrNul();
    text.model.TrimLeft(std::string(1, character));
    text.real.TrimLeft(character);
}

void TrimLeftSet(Texts& texts) {
    Text& text = texts.Any();
    const Argument set = texts.AnyText();
    text.model.TrimLeft(set.model);
    text.real.TrimLeft(set.real);
}

void TrimRight(Texts& texts) {
    Text& text = texts.Any();
    text.model.TrimRight(kWhiteSpace);
    text.real.TrimRight();
}

void TrimRightCharacter(Texts& texts) {
    Text& text = texts.Any();
    const char character = texts.CharacterOrNul();
    text.model.TrimRight(std::string(1, character));
    text.real.TrimRight(character);
}

void TrimRightSet(Texts& texts) {
    Text& text = texts.Any();
    const Argument set = texts.AnyText();
    text.model.TrimRight(set.model);
    text.real.TrimRight(set.real);
}

void Format(Texts& texts) {
    Text& text = texts.Any();
    const Argument argument = texts.AnyText();
    const int number = texts.Upto(1000) - 500;
    const std::string shown = argument.real == nullptr ? "(null)" : argument.model;
    const size_t reserved = std::max<size_t>(shown.size(), 1) + 1 + 32;
    text.real.Format("%s|%d", argument.real, number);
    text.model.Print(shown + "|" + std::to_string(number), reserved);
}

const Operation kTable[] = {
    {"CString(character, count)", ConstructFromCharacter},
    {"CString(text)", ConstructFromText},
    {"CString(text, length)", ConstructFromTextAndLength},
    {"CString(CString)", Copy},
    {"= CString", Assign},
    {"= text", AssignText},
    {"+= CString", Append},
    {"+= text", AppendText},
    {"CString + CString", Add},
    {"CString + text", AddText},
    {"text + CString", AddToText},
    {"== and !=", Compare},
    {"Empty", Empty},
    {"GetAt and []", GetAt},
    {"SetAt", SetAt},
    {"GetBuffer", GetBuffer},
    {"GetBuffer, ReleaseBuffer", ReleaseBuffer},
    {"GetBufferSetLength", GetBufferSetLength},
    {"FreeExtra", FreeExtra},
    {"LockBuffer", LockBuffer},
    {"UnlockBuffer", UnlockBuffer},
    {"Find(character)", FindCharacter},
    {"Find(text)", FindText},
    {"ReverseFind", ReverseFind},
    {"FindOneOf", FindOneOf},
    {"Mid(first)", Mid},
    {"Mid(first, count)", MidWithCount},
    {"Left", Left},
    {"Right", Right},
    {"Insert(character)", InsertCharacter},
    {"Insert(text)", InsertText},
    {"Delete", Delete},
    {"Replace(character)", ReplaceCharacter},
    {"Replace(text)", ReplaceText},
    {"Remove", Remove},
    {"TrimLeft()", TrimLeft},
    {"TrimLeft(character)", TrimLeftCharacter},
    {"TrimLeft(set)", TrimLeftSet},
    {"TrimRight()", TrimRight},
    {"TrimRight(character)", TrimRightCharacter},
    {"TrimRight(set)", TrimRightSet},
    {"Format", Format},
};

}  // namespace

const Operation* const kOperations = kTable;
const size_t kCount = std::size(kTable);

}  // namespace string_operations
