// The answer matcher, against its rule told anew: any text is waited for while the far end says any
// texts at any times.
#include <algorithm>
#include <chrono>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "linux/win_serial.h"
#include "linux/win_system.h"
#include "modem/COMHdl.h"
#include "sim/testing.h"
#include "tests/fuzz/folder.h"
#include "tests/fuzz/input.h"
#include "tests/support/memory_store.h"

namespace {

using fuzz::Expect;
using fuzz::Input;
using pagersim::Milliseconds;
using pagersim::VirtualClock;
using namespace std::chrono_literals;

constexpr time_t kStart = VirtualClock::kDefaultStart;
constexpr auto kTimeOut = 30s;
constexpr size_t kReadAtOnce = 128;  // bytes
constexpr size_t kKept = 254;        // of what was said, from one read to the next

struct Piece {
    Milliseconds at;
    std::string text;
};

// No two at the same time, and none about the end of the wait.
std::vector<Piece> ReadPieces(Input& input) {
    std::vector<Piece> pieces;
    Milliseconds at = 0ms;
    while (!input.AtEnd() && at < 2 * kTimeOut) {
        at += 500ms * (input.Upto(30) + 1);
        if (at != kTimeOut) {
            pieces.push_back({at, input.Text()});
        }
    }
    return pieces;
}

class Says : public pagersim::FarEnd {
 public:
    explicit Says(std::vector<Piece> pieces) : pieces_(std::move(pieces)) {}

    void Opened(pagersim::Wire& wire) override {
        for (const Piece& piece : std::exchange(pieces_, {})) {
            wire.At(piece.at, [&wire, text = piece.text] { wire.Send(text); });
        }
    }
    void Heard(std::string_view) override {}
    void SettingsChanged(const termios&) override {}
    void Closed() override {}

 private:
    std::vector<Piece> pieces_;
};

struct Outcome {
    bool found = false;
    bool failure = false;  // one of the modem's answers was heard
};

bool HasFailureAnswer(const std::string& said) {
    for (const char* answer : {"NO DIALTONE", "BUSY", "NO CARRIER", "NO ANSWER", "ERROR"}) {
        if (said.find(answer) != std::string::npos) {
            return true;
        }
    }
    return false;
}

// Read while no time passes: the clock moves on with a program that looks at it again and again.
bool IsShort(const Piece& piece) {
    return piece.text.size() < 8 * kReadAtOnce;
}

// What the line hands over in one go, one after the other.
std::vector<std::string> ReadsUntil(Milliseconds end, const std::vector<Piece>& pieces) {
    std::vector<std::string> reads;
    for (const Piece& piece : pieces) {
        for (size_t from = 0; piece.at <= end && from < piece.text.size(); from += kReadAtOnce) {
            reads.push_back(piece.text.substr(from, kReadAtOnce));
        }
    }
    return reads;
}

Outcome ByTheRule(const std::vector<Piece>& pieces, const std::string& wanted) {
    std::string said;
    for (const std::string& read : ReadsUntil(kTimeOut, pieces)) {
        said += read;
        if (said.size() >= wanted.size()) {
            if (said.find(wanted) != std::string::npos) {
                return {true, false};
            }
            if (HasFailureAnswer(said)) {
                return {false, true};
            }
        }
        if (said.size() > kKept) {
            said = said.substr(said.size() / 2);
        }
    }
    return {};
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    const VirtualClock clock(kStart);
    GetTickCount();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Input input(data, size);
    const std::string wanted = input.Text();
    const std::vector<Piece> pieces = ReadPieces(input);

    if (!std::all_of(pieces.begin(), pieces.end(), IsShort)) {
        return -1;
    }

    const fuzz::InOwnFolder folder;
    const VirtualClock clock(kStart + 3600);
    VirtualClock::SetStep(100ms);
    test_support::MemoryStore store;
    store.AddAllTables();
    CCOMHdl handler(test_support::MemoryStore::kDatabase);
    const pagersim::AttachedLine line(1, std::make_unique<Says>(pieces));
    HANDLE handle = CreateFile("COM1");
    SetCommMask(handle, EV_RXCHAR);
    CCOMHdl::MainModemError = false;

    const CString expected(wanted.data(), static_cast<int>(wanted.size()));
    const Outcome outcome = ByTheRule(pieces, wanted);
    const bool found = handler.WaitString(
        handle, expected, static_cast<DWORD>(Milliseconds(kTimeOut).count()), false);
    Expect(found == outcome.found, "found is what was said in time, and not cut off");
    Expect(CCOMHdl::MainModemError == outcome.failure, "the modem's failures end the wait");
    CloseHandle(handle);
    return 0;
}
