// The order in which far ends' plans are carried out.
#include "sim/world/event_queue.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

using namespace std::chrono_literals;

namespace pagersim {
namespace {

class EventQueueTest : public testing::Test {
 protected:
    std::function<void()> Note(char name) {
        return [this, name] { ran += name; };
    }

    void RunAll() {
        while (queue.Next() != kNever) {
            queue.RunNext();
        }
    }

    EventQueue queue;
    std::string ran;
};

TEST_F(EventQueueTest, NothingIsNever) {
    EXPECT_EQ(kNever, queue.Next());
}

TEST_F(EventQueueTest, TheEarliestComesFirst) {
    queue.Add(30us, nullptr, Note('c'));
    queue.Add(10us, nullptr, Note('a'));
    queue.Add(20us, nullptr, Note('b'));

    EXPECT_EQ(10us, queue.Next());
    RunAll();
    EXPECT_EQ("abc", ran);
}

TEST_F(EventQueueTest, AtOneInstantTheFirstAddedComesFirst) {
    for (const char name : std::string("abcdef")) {
        queue.Add(5us, nullptr, Note(name));
    }
    RunAll();
    EXPECT_EQ("abcdef", ran);
}

TEST_F(EventQueueTest, ACallMayAddAnother) {
    queue.Add(5us, nullptr, [this] {
        ran += 'a';
        queue.Add(5us, nullptr, Note('c'));
    });
    queue.Add(5us, nullptr, Note('b'));
    RunAll();
    EXPECT_EQ("abc", ran);
}

TEST_F(EventQueueTest, DroppingForgetsOneOwnersCallsOnly) {
    const int one = 1;
    const int other = 2;
    queue.Add(1us, &one, Note('a'));
    queue.Add(2us, &other, Note('b'));
    queue.Add(3us, &one, Note('c'));
    queue.Drop(&one);
    RunAll();
    EXPECT_EQ("b", ran);
}

TEST_F(EventQueueTest, ACallMayDropItsOwner) {
    const int owner = 1;
    queue.Add(1us, &owner, [&] {
        ran += 'a';
        queue.Drop(&owner);
    });
    queue.Add(2us, &owner, Note('b'));
    RunAll();
    EXPECT_EQ("a", ran);
}

}  // namespace
}  // namespace pagersim
