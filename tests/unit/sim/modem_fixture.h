// A modem between a test and a centre that keeps what it hears.
#ifndef PAGERFWD_TESTS_UNIT_SIM_MODEM_FIXTURE_H
#define PAGERFWD_TESTS_UNIT_SIM_MODEM_FIXTURE_H

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <string_view>

#include "sim/phone/modem.h"
#include "tests/unit/sim/fakes.h"

namespace pagersim {

// A centre that greets, and keeps what it hears.
struct Keeper {
    std::string greeting = "ID=";
    std::string heard;
    std::string dialled;
    Call* call = nullptr;  // null when none stands
};

class KeepingCentre : public Centre {
 public:
    explicit KeepingCentre(Keeper& keeper) : keeper_(keeper) {}

    void Answered(Call& call) override {
        keeper_.call = &call;
        if (!keeper_.greeting.empty()) {
            call.Say(keeper_.greeting);
        }
    }
    void Heard(std::string_view bytes) override { keeper_.heard += bytes; }
    void Dialled(std::string_view digits) override { keeper_.dialled += digits; }
    void Ended() override { keeper_.call = nullptr; }

 private:
    Keeper& keeper_;
};

inline constexpr Milliseconds kLong{120'000};
inline constexpr Milliseconds kUsualGuard{1020};  // of +++; the time that has begun counts for none

class ModemTest : public ::testing::Test {
 protected:
    ModemTest() {
        Add("centre", "1234567", [](Subscriber&) {});
        Add("voice", "7654321", [](Subscriber& subscriber) { subscriber.has_modem = false; });
    }

    template <typename Change>
    void Add(const std::string& name, const std::string& number, Change change) {
        Subscriber subscriber;
        subscriber.name = name;
        subscriber.numbers = {number};
        subscriber.response = 0ms;
        subscriber.make_centre = [this] { return std::make_unique<KeepingCentre>(keeper_); };
        change(subscriber);
        exchange_.Add(subscriber);
    }

    // The modem, made with the options so far and opened at first use.
    Modem& Opened() {
        if (modem_ == nullptr) {
            modem_ = std::make_unique<Modem>("COM 1", options_, exchange_, recorder_);
            Open();
        }
        return *modem_;
    }

    void Open() {
        modem_->Opened(wire_);
        Set(CS8);
    }

    // The line at 2400 bit/s.
    void Set(tcflag_t flags) {
        termios settings{};
        settings.c_cflag = flags;
        cfsetspeed(&settings, B2400);
        modem_->SettingsChanged(settings);
    }

    // What comes back when this is sent and a second passes.
    std::string To(std::string_view bytes, Milliseconds wait = 1000ms) {
        Opened().Heard(bytes);
        return wire_.Read(wait);
    }

    // A connection to the centre, its greeting read.
    void Connect() {
        ASSERT_EQ("ATDT0,1234567\r\r\nCONNECT 2400\r\nID=", To("ATDT0,1234567\r", kLong));
    }

    // As Connect, and then the escape to command state.
    void ConnectAndEscape() {
        Connect();
        ASSERT_EQ("\r\nOK\r\n", To("+++", kUsualGuard));
    }

    ModemOptions options_;
    Exchange exchange_;
    Keeper keeper_;
    FakeRecorder recorder_;
    FakeWire wire_;
    std::unique_ptr<Modem> modem_;
};

}  // namespace pagersim

#endif
