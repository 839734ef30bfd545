// A process's connection to its world, and a server that the test plays.
#include "sim/world/link.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <string>

#include "sim/descriptor.h"
#include "sim/world/socket_address.h"
#include "tests/support/temp_dir.h"

namespace pagersim {
namespace {

class LinkTest : public ::testing::Test {
 protected:
    LinkTest() : listener_(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0)) {
        // A link that is left behind would be taken for an inherited one by the next of its world.
        const std::string path = folder_.Path() / "world";
        const sockaddr_un address = AddressOf(path);
        EXPECT_EQ(0, bind(listener_.Number(), reinterpret_cast<const sockaddr*>(&address),
                          sizeof address));
        EXPECT_EQ(0, listen(listener_.Number(), 5));
        link_ = std::make_unique<Link>(path);
        server_ = Accept();
    }

    Descriptor Accept() const { return Descriptor(accept(listener_.Number(), nullptr, nullptr)); }

    // What the server says next, with a text behind it.
    static void Say(const Descriptor& server, uint32_t connection, const std::string& text = "") {
        Reply reply{};
        reply.connection = connection;
        const std::string bytes =
            std::string(reinterpret_cast<const char*>(&reply), sizeof reply) + text;
        EXPECT_EQ(static_cast<ssize_t>(bytes.size()),
                  send(server.Number(), bytes.data(), bytes.size(), 0));
    }
    // What the server was asked last.
    Request Asked() const {
        Request request{};
        EXPECT_LE(static_cast<ssize_t>(sizeof request),
                  recv(server_.Number(), &request, sizeof request, MSG_DONTWAIT));
        return request;
    }

    const test_support::TempDir folder_;
    Descriptor listener_;
    Descriptor server_;
    std::unique_ptr<Link> link_;
};

TEST_F(LinkTest, AsksAndHearsTheAnswerWithWhatComesWithIt) {
    Say(server_, 7, "input");
    Request request{};
    request.ask = Question::kTake;
    std::string payload = "before";
    EXPECT_EQ(7U, link_->Ask(request, "", &payload).connection);
    EXPECT_EQ("input", payload);
    EXPECT_EQ(Question::kTake, Asked().ask);
}

TEST_F(LinkTest, HasTheTurnFromItsComingToItsRest) {
    Reply reply{};
    EXPECT_FALSE(link_->ReceiveTurn(reply, false));
    Say(server_, 7);
    EXPECT_TRUE(link_->ReceiveTurn(reply, false));
    EXPECT_EQ(7U, reply.connection);
    EXPECT_TRUE(link_->HasTurn());
    link_->Rest(5, kTouched, 0);
    EXPECT_FALSE(link_->HasTurn());
    EXPECT_EQ(5, Asked().deadline);
    Say(server_, 8);
    EXPECT_TRUE(link_->ReceiveTurn(reply, true));
    EXPECT_EQ(8U, reply.connection);
}

TEST_F(LinkTest, AwaitsTheTurn) {
    const auto await_turn = [this] {
        Say(server_, 7);
        Reply reply{};
        _exit(link_->AwaitTurn(reply) && link_->HasTurn() ? static_cast<int>(reply.connection) : 1);
    };
    EXPECT_EXIT(await_turn(), ::testing::ExitedWithCode(7), "");
}

TEST_F(LinkTest, WantsTheTurnOnceForEachRest) {
    link_->Want();
    link_->Want();
    EXPECT_EQ(Question::kWant, Asked().ask);
    Request none{};
    EXPECT_EQ(-1, recv(server_.Number(), &none, sizeof none, MSG_DONTWAIT));
}

TEST_F(LinkTest, OwnsItsEndsAndNoOther) {
    int owned = 0;
    for (int fd = -2; fd < 4096; ++fd) {
        owned += link_->Owns(fd) ? 1 : 0;
    }
    EXPECT_EQ(1, owned);
    EXPECT_TRUE(link_->Owns(link_->Descriptor()));
    EXPECT_FALSE(link_->Owns(-1));
    EXPECT_FALSE(link_->Owns(server_.Number()));
}

// Whatever came of the call before: it may have been interrupted. Who asks for ever is ended.
TEST_F(LinkTest, EndsWithItsWorld) {
    const auto end_world = [this] {
        const rlimit seconds{5, 5};
        setrlimit(RLIMIT_CPU, &seconds);
        shutdown(server_.Number(), SHUT_WR);
        errno = EINTR;
    };
    const auto ask = [&] {
        end_world();
        link_->Ask(Request{});
    };
    EXPECT_EXIT(ask(), ::testing::ExitedWithCode(125), "the world of this program has ended");
    const auto await_turn = [&] {
        end_world();
        Reply reply{};
        while (!link_->AwaitTurn(reply)) {
        }
    };
    EXPECT_EXIT(await_turn(), ::testing::ExitedWithCode(125), "");
}

}  // namespace
}  // namespace pagersim
