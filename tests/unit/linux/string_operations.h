// CString against StringModel: operations on a few texts that share with one another. Which
// operation comes next, on which texts and with what, is left to whoever runs them.
#ifndef PAGERFWD_TESTS_UNIT_LINUX_STRING_OPERATIONS_H
#define PAGERFWD_TESTS_UNIT_LINUX_STRING_OPERATIONS_H

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <string>
#include <utility>

#include "linux/XString.h"
#include "tests/unit/linux/string_header.h"
#include "tests/unit/linux/string_model.h"

namespace string_operations {

constexpr int kLongest = 40;  // a text beyond this is begun afresh

struct Text {
    CString real;
    StringModel model;
};

// A text as an argument: sometimes a part of one of the texts worked on, never with a NUL inside.
struct Argument {
    const char* real;
    std::string model;
};

class Texts {
 public:
    // upto: any number from 0 to its argument.
    explicit Texts(std::function<int(int)> upto) : upto_(std::move(upto)) {}

    int Upto(int limit) { return upto_(limit); }
    bool OnceIn(int times) { return Upto(times - 1) == 0; }

    Text& Any() { return texts_[Upto(kTexts - 1)]; }

    Text& AnyNotEmpty() {
        Text& text = Any();
        if (text.model.Length() == 0) {
            text.real = "a b";
            text.model.Assign("a b");
        }
        return text;
    }

    // Few different characters, so that much is found, trimmed and replaced.
    char Character() { return "ab \tX\xE9"[Upto(5)]; }
    char CharacterOrNul() { return OnceIn(20) ? '\0' : Character(); }

    std::string Characters(int length) {
        std::string characters;
        while (length-- > 0) {
            characters += CharacterOrNul();
        }
        return characters;
    }

    Argument AnyText() {
        if (OnceIn(10)) {
            return {nullptr, ""};
        }
        if (OnceIn(5)) {
            const Text& text = Any();
            const char* part = ::Characters(text.real) + Upto(text.real.GetLength());
            return {part, part};
        }
        scratch_ = Characters(Upto(4));
        return {scratch_.c_str(), UpToNul(scratch_)};
    }

    // From just before the text to just behind it, and far out now and then.
    int Number(const Text& text) {
        if (OnceIn(30)) {
            return OnceIn(2) ? 2'000'000'000 : -2'000'000'000;
        }
        return Upto(text.real.GetLength() + 4) - 2;
    }

    template <class Value>
    void Same(const Value& expected, const Value& result) {
        EXPECT_EQ(expected, result);
    }

    // A text that an operation returned takes the place of one of the texts.
    void Same(const StringModel& expected, const CString& result) {
        Text& text = Any();
        text.model = expected;
        text.real = result;
    }

    void KeepShort();

    // Characters, length, room, count of sharers, and who shares with whom.
    void ExpectToFitTheirModels() const;

 private:
    static constexpr int kTexts = 6;

    Text texts_[kTexts];
    std::string scratch_;
    std::function<int(int)> upto_;
};

struct Operation {
    const char* name;
    void (*run)(Texts&);
};

// All of them, kCount.
extern const Operation* const kOperations;
extern const size_t kCount;

}  // namespace string_operations

#endif
