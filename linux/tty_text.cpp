// The line driver: printable forms, option texts, traces. Tested by
// tests/unit/linux/tty_text_test.cpp.
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "linux/tty.h"

int32_t verbose = 1;
int (*verbout)(const char* format, ...) = verbose_out;

int verbose_out(const char* format, ...) {
    va_list args;
    va_start(args, format);
    const int printed = vprintf(format, args);
    va_end(args);
    return printed;
}

namespace {

constexpr unsigned char kDelete = 127;

constexpr std::string_view kControlNames[] = {
    "<nul>", "<soh>", "<stx>", "<etx>", "<eot>", "<enq>", "<ack>", "<bel>",
    "<bs>",  "<ht>",  "<lf>",  "<vt>",  "<ff>",  "<cr>",  "<so>",  "<si>",
    "<dle>", "<dc1>", "<dc2>", "<dc3>", "<dc4>", "<nak>", "<syn>", "<etb>",
    "<can>", "<em>",  "<sub>", "<esc>", "<fs>",  "<gs>",  "<rs>",  "<us>",
};

// The one text that mkprint hands out.
class PrintText {
 public:
    void Start() { m_length = 0; }

    // False when there is no memory: the text then ends before the piece.
    bool Append(std::string_view piece) {
        if (m_length + piece.size() > m_room && !Grow()) {
            return false;
        }
        memcpy(m_text + m_length, piece.data(), piece.size());
        m_length += piece.size();
        return true;
    }

    const char* End() {
        if (m_text == nullptr) {
            return "";
        }
        m_text[m_length] = '\0';
        return m_text;
    }

 private:
    static constexpr size_t kStep = 128;  // more than the longest piece
    static constexpr size_t kBeyond = 2;  // room for the NUL

    bool Grow() {
        char* const grown = static_cast<char*>(realloc(m_text, m_room + kStep + kBeyond));
        if (grown == nullptr) {
            return false;
        }
        m_text = grown;
        m_room += kStep;
        return true;
    }

    char* m_text = nullptr;  // m_room + kBeyond bytes
    size_t m_room = 0;
    size_t m_length = 0;
};

PrintText printText;

bool AppendSevenBits(unsigned char byte) {
    if (byte < 32) {
        return printText.Append(kControlNames[byte]);
    }
    if (byte == kDelete) {
        return printText.Append("<del>");
    }
    const char shown = static_cast<char>(byte);
    return printText.Append({&shown, 1});
}

bool AppendByte(unsigned char byte) {
    if (byte < 128) {
        return AppendSevenBits(byte);
    }
    return printText.Append("<M-") && AppendSevenBits(byte & 0x7f) && printText.Append(">");
}

}  // namespace

const char* mkprint(const void* bytes, int32_t count) {
    printText.Start();
    const auto* const from = static_cast<const unsigned char*>(bytes);
    for (int32_t i = 0; from != nullptr && i < count && AppendByte(from[i]); ++i) {
    }
    return printText.End();
}

char* skipch(char* text, char separator) {
    char* const found = text == nullptr || separator == '\0' ? nullptr : strchr(text, separator);
    if (found == nullptr) {
        return nullptr;
    }
    *found = '\0';
    return found + 1 + strspn(found + 1, " \t");
}
