// What is built for a line, against a plain loop over the same bytes that does the least of it.
#include <cstdint>
#include <string>

#include "bench/measure.h"
#include "linux/XString.h"
#include "modem/COMHdl.h"
#include "modem/ntt_code.h"
#include "modem/printable_form.h"
#include "modem/tap_block.h"
#include "modem/ucp_frame.h"

namespace bench {
namespace {

constexpr int kBytes = 200;
constexpr const char* kNumber = "5550111";

std::string Message() {
    std::string message;
    while (message.size() < kBytes) {
        message += "operators/Critical/PLANT-SRV-2/Boiler 2: 9.3 bar";
    }
    message.resize(kBytes);
    return message;
}

// Runs `work` on the message; the rate is that of the message's bytes.
template <typename Text, typename Work>
Run Each(Work work) {
    return [work](benchmark::State& state) {
        const std::string message = Message();
        const char* const plain = message.c_str();
        const Text text(plain);
        for ([[maybe_unused]] auto _ : state) {
            auto result = work(text);
            benchmark::DoNotOptimize(result);
        }
        state.SetBytesProcessed(state.iterations() * kBytes);
    };
}

template <typename Work>
Run Ours(Work work) {
    return Each<CString>(work);
}
template <typename Work>
Run Plain(Work work) {
    return Each<std::string>(work);
}

uint32_t Sum(const std::string& text) {
    uint32_t sum = 0;
    for (const char c : text) {
        sum += static_cast<unsigned char>(c) & 0x7FU;
        benchmark::DoNotOptimize(sum);  // a byte at a time, as a plain loop does
    }
    return sum;
}

std::string PlainTap(const std::string& message) {
    std::string block = std::string("\x02") + kNumber + "\r" + message + "\r\x03";
    const uint32_t sum = Sum(block);
    for (const unsigned shift : {8U, 4U, 0U}) {
        block += static_cast<char>('0' + ((sum >> shift) & 0xFU));
    }
    return block + "\r";
}

std::string PlainUcp(const std::string& message) {
    std::string frame = std::string("\x02") + "03/00000/O/51/" + kNumber + "/12345//3//";
    for (const char c : message) {
        frame += "0123456789ABCDEF"[(static_cast<unsigned char>(c) >> 4U) & 7U];
        frame += "0123456789ABCDEF"[static_cast<unsigned char>(c) & 0xFU];
    }
    const uint32_t sum = Sum(frame);
    frame += "0123456789abcdef"[(sum >> 4U) & 0xFU];
    frame += "0123456789abcdef"[sum & 0xFU];
    return frame + "\x03";
}

std::string PlainDigits(const std::string& message) {
    std::string digits;
    for (const char c : message) {
        digits += static_cast<char>('0' + (static_cast<unsigned char>(c) & 7U));
        digits += static_cast<char>('0' + (static_cast<unsigned char>(c) >> 5U));
    }
    return digits;
}

std::string PlainPrintable(const std::string& message) {
    std::string shown;
    for (const char c : message) {
        if (c > ' ') {
            shown += c;
        } else {
            shown += {'<', "0123456789abcdef"[(static_cast<unsigned char>(c) >> 4U) & 0xFU],
                      "0123456789abcdef"[static_cast<unsigned char>(c) & 0xFU], '>'};
        }
    }
    return shown;
}

}  // namespace
}  // namespace bench

void RegisterRows() {
    using namespace bench;
    Compare("TAP checksum", Ours([](const CString& text) { return CheckSum(text); }), Plain(Sum));
    Compare("TAP block", Ours([](const CString& text) { return CreateD1Block(kNumber, text); }),
            Plain(PlainTap));
    Compare("UCP frame", Ours([](const CString& text) { return CreateUCPFrame(kNumber, text); }),
            Plain(PlainUcp));
    Compare("NTT code", Ours([](const CString& text) { return CCOMHdl::FormatNTT(text); }),
            Plain(PlainDigits));
    Compare("printable form of a line's bytes", Ours([](const CString& text) {
                return PrintableForm(static_cast<const char*>(text),
                                     static_cast<size_t>(text.GetLength()));
            }),
            Plain(PlainPrintable));
}
