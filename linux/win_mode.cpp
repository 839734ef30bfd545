// Mode texts, "COM1:2400,n,8,1", read into a device-control block. Tested by
// tests/unit/linux/mode_text_test.cpp.
#include <algorithm>
#include <cstdint>
#include <cstring>

#include "linux/win_serial.h"

const char abbr_parity[] = "noems";

namespace {

constexpr DWORD kLowestBaudRate = 300;
constexpr DWORD kFewestDataBits = 5;
constexpr DWORD kMostDataBits = 8;
// More than any field's number can mean; a longer one is cut to it.
constexpr DWORD kMostNumber = INT32_MAX;

constexpr bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

constexpr bool IsUpper(char c) {
    return c >= 'A' && c <= 'Z';
}

constexpr bool IsLetter(char c) {
    return IsUpper(c) || (c >= 'a' && c <= 'z');
}

constexpr char ToLower(char c) {
    return IsUpper(c) ? static_cast<char>(c - 'A' + 'a') : c;
}

// What is still to be read of a mode text. Every scan stops at the end of the text and then fails.
class ModeText {
 public:
    explicit ModeText(const char* text) : m_rest(text) {}

    char Next() const { return *m_rest; }

    bool SkipPast(char separator) {
        if (!SkipTo([separator](char c) { return c == separator; })) {
            return false;
        }
        ++m_rest;
        return true;
    }

    bool NextLetter(char* letter) {
        if (!SkipTo(IsLetter)) {
            return false;
        }
        *letter = ToLower(*m_rest);
        return true;
    }

    bool NextNumber(DWORD* number) {
        if (!SkipTo(IsDigit)) {
            return false;
        }
        uint64_t value = 0;
        for (; IsDigit(*m_rest); ++m_rest) {
            value =
                std::min<uint64_t>(value * 10 + static_cast<uint64_t>(*m_rest - '0'), kMostNumber);
        }
        *number = static_cast<DWORD>(value);
        return true;
    }

 private:
    template <typename Wanted>
    bool SkipTo(Wanted wanted) {
        while (*m_rest != '\0' && !wanted(*m_rest)) {
            ++m_rest;
        }
        return *m_rest != '\0';
    }

    const char* m_rest;
};

// Says why, and fails.
bool Refuse(int32_t error) {
    win_errno = error;
    return false;
}

bool ReadBaudRate(ModeText& mode, DCB* dcb) {
    if (!mode.NextNumber(&dcb->BaudRate)) {
        return false;
    }
    return dcb->BaudRate >= kLowestBaudRate || Refuse(IE_BAUDRATE);
}

bool ReadParity(ModeText& mode, DCB* dcb) {
    char letter = '\0';
    if (!mode.SkipPast(',') || !mode.NextLetter(&letter)) {
        return false;
    }
    const char* const found = strchr(abbr_parity, letter);
    if (found == nullptr) {
        return false;
    }
    dcb->Parity = static_cast<BYTE>(found - abbr_parity);
    dcb->fParity = dcb->Parity != NOPARITY ? 1 : 0;
    return true;
}

bool ReadDataBits(ModeText& mode, DCB* dcb) {
    if (!mode.SkipPast(',')) {
        return false;
    }
    DWORD bits = kMostDataBits;
    if (mode.Next() != ',' && !mode.NextNumber(&bits)) {
        return false;
    }
    if (bits < kFewestDataBits || bits > kMostDataBits) {
        return Refuse(IE_BYTESIZE);
    }
    dcb->ByteSize = static_cast<BYTE>(bits);
    return true;
}

bool ReadStopBits(ModeText& mode, DCB* dcb) {
    DWORD bits = 0;
    if (!mode.SkipPast(',') || !mode.NextNumber(&bits) || bits < 1 || bits > 2) {
        return false;
    }
    dcb->StopBits = bits == 1 ? ONESTOPBIT : TWOSTOPBITS;
    return true;
}

}  // namespace

BOOL BuildCommDCB(const char* mode, DCB* dcb) {
    if (mode == nullptr || dcb == nullptr) {
        return 0;
    }
    ModeText text(mode);
    DCB read{};
    read.DCBlength = sizeof read;
    if (!text.SkipPast(':') || !ReadBaudRate(text, &read) || !ReadParity(text, &read) ||
        !ReadDataBits(text, &read) || !ReadStopBits(text, &read)) {
        return 0;
    }
    *dcb = read;
    return 1;
}
