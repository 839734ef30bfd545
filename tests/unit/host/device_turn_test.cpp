// Whose turn it is at a device, under the virtual clock: it stands still only where all wait.
#include "host/platform/device_turn.h"

#include <gtest/gtest.h>
#include <poll.h>

#include <optional>
#include <thread>

#include "sim/testing.h"

namespace host {
namespace {

using pagersim::Milliseconds;

constexpr int kLibrarysFile = 77;

class DeviceTurns : public ::testing::Test {
 protected:
    // As the library does it for a page, in a thread of its own.
    static int OpenAndClose() {
        const int file = OpenAtItsTurn([] { return kLibrarysFile; });
        NoteClosed(file);
        return file;
    }
    static void Wait(int milliseconds) { poll(nullptr, 0, milliseconds); }

    const pagersim::VirtualClock clock;
};

TEST_F(DeviceTurns, AreTheLibrarysWhereNobodyElseWantsOne) {
    EXPECT_EQ(kLibrarysFile, OpenAndClose());
    EXPECT_EQ(kLibrarysFile, OpenAndClose());
}

TEST_F(DeviceTurns, ComeWhenTheLibraryHasClosedTheDevice) {
    OpenAtItsTurn([] { return kLibrarysFile; });
    const DeviceTurn turn;
    EXPECT_FALSE(DeviceTurn::HasCome());
    NoteClosed(kLibrarysFile + 1);
    EXPECT_FALSE(DeviceTurn::HasCome()) << "that was another file";
    NoteClosed(kLibrarysFile);
    EXPECT_TRUE(DeviceTurn::HasCome());
}

TEST_F(DeviceTurns, ComeAtOnceWhereTheDeviceCouldNotBeOpened) {
    EXPECT_EQ(-1, OpenAtItsTurn([] { return -1; }));
    const DeviceTurn turn;
    EXPECT_TRUE(DeviceTurn::HasCome());
}

TEST_F(DeviceTurns, KeepTheLibraryWaitingUntilTheyEnd) {
    std::optional<Milliseconds> opened;
    std::thread library;
    {
        const DeviceTurn turn;
        library = std::thread([&] {
            OpenAndClose();
            opened = pagersim::VirtualClock::Now();
        });
        Wait(3000);
        EXPECT_TRUE(DeviceTurn::HasCome());
    }
    library.join();
    EXPECT_EQ(Milliseconds(3000), opened);
}

TEST_F(DeviceTurns, LetTheirOwnThreadOpenTheDevice) {
    const DeviceTurn turn;
    EXPECT_EQ(kLibrarysFile, OpenAtItsTurn([] { return kLibrarysFile; }));
    EXPECT_TRUE(DeviceTurn::HasCome()) << "the library has not opened it";
}

}  // namespace
}  // namespace host
