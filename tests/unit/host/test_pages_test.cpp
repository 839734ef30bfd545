// Test pages that another process asks for.
#include "host/store/tables/test_pages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/unit/host/another_program.h"
#include "tests/unit/host/child_process.h"
#include "tests/unit/host/service_test.h"

namespace host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class TestPagesAskedFor : public ServiceTest {
 protected:
    // A process that has asked for a page, and waits.
    struct Asker {
        Asker(TestPagesAskedFor& test, const std::string& pager)
            : process({STORE_PROCESS, test.database, "own"}) {
            test.Execute("INSERT INTO Host_TestPages (asked_by, pager) VALUES (" +
                         process.ReadLine() + ", '" + pager + "')");
        }
        ChildProcess process;
    };

    std::string Next() {
        const std::vector<AskedTestPage> asked = AskedTestPages(connection, owners);
        return asked.empty() ? "none" : asked.front().pager;
    }

    OwnerLock owners{database};
};

TEST_F(TestPagesAskedFor, AreAnsweredOneByOne) {
    const int64_t first = AskForTestPage(connection, owners, "duty", "");
    const int64_t second = AskForTestPage(connection, owners, "night", "south");
    EXPECT_NE(first, second);
    EXPECT_FALSE(TestPageAnswer(connection, first));

    const std::vector<AskedTestPage> both = AskedTestPages(connection, owners);
    ASSERT_EQ(2U, both.size());
    EXPECT_EQ(first, both[0].asked);
    EXPECT_EQ("duty", both[0].pager);
    EXPECT_EQ("", both[0].line);
    EXPECT_EQ("south", both[1].line);
    GiveTestPage(connection, first, "north");
    EXPECT_EQ("north", AskedTestPages(connection, owners)[0].line);
    AnswerTestPage(connection, first, {7, ""});
    EXPECT_EQ(7, TestPageAnswer(connection, first)->answer);
    EXPECT_FALSE(TestPageAnswer(connection, second));
    EXPECT_EQ("night", Next());
    AnswerTestPage(connection, second, {0, ""});
    EXPECT_EQ(0, TestPageAnswer(connection, second)->answer);
    EXPECT_EQ("none", Next());
}

TEST_F(TestPagesAskedFor, MayBeCalls) {
    const int64_t page = AskForTestPage(connection, owners, "duty", "north");
    const int64_t call = AskForTestCall(connection, owners, "south", "0,5550101");
    const std::vector<AskedTestPage> both = AskedTestPages(connection, owners);
    ASSERT_EQ(2U, both.size());
    EXPECT_EQ("", both[0].number);
    EXPECT_EQ("south", both[1].line);
    EXPECT_EQ("0,5550101", both[1].number);
    AnswerTestPage(connection, call, {6, "NO CARRIER"});
    EXPECT_EQ("NO CARRIER", TestPageAnswer(connection, call)->said);
    EXPECT_FALSE(TestPageAnswer(connection, page));
}

TEST_F(TestPagesAskedFor, AreForgottenByWhoAsked) {
    const int64_t asked = AskForTestPage(connection, owners, "duty", "");
    ForgetTestPage(connection, asked);
    EXPECT_FALSE(TestPageAnswer(connection, asked));
    EXPECT_EQ("none", Next());
    EXPECT_THAT(Rows("pager FROM Host_TestPages"), IsEmpty());
}

TEST_F(TestPagesAskedFor, MayComeFromAnotherProcess) {
    const Asker asker(*this, "duty");
    EXPECT_EQ("duty", Next());
}

TEST_F(TestPagesAskedFor, AreNobodysWhenTheAskerHasDied) {
    Asker dead(*this, "first");
    Asker ended(*this, "second");
    const Asker waiting(*this, "third");
    dead.process.Kill();
    EXPECT_EQ(0, ended.process.Finish());
    EXPECT_EQ("third", Next());
    EXPECT_THAT(Rows("pager FROM Host_TestPages"), ElementsAre("third"));
}

TEST_F(TestPagesAskedFor, KeepTheirPagersName) {
    const std::string name = "a\"b'c%s\x93\xFA;--";
    AskForTestPage(connection, owners, name, "");
    EXPECT_EQ(name, Next());
}

TEST_F(TestPagesAskedFor, AreNotHiddenByOneThatIsTooLarge) {
    for (const char* cell : {"pager", "number"}) {
        const int64_t large = AskForTestCall(connection, owners, "north", "1");
        const int64_t duty = AskForTestPage(connection, owners, "duty", "");
        WriteAsAnother(database, "UPDATE Host_TestPages SET " + std::string(cell) +
                                     " = hex(zeroblob(600000)) WHERE number = '1'");
        const std::vector<AskedTestPage> both = AskedTestPages(connection, owners);
        ASSERT_EQ(2U, both.size()) << cell;
        EXPECT_EQ("", both[0].pager);  // which no pager is called
        EXPECT_EQ("", both[0].number);
        AnswerTestPage(connection, large, {-1, ""});
        EXPECT_EQ("duty", Next());
        AnswerTestPage(connection, duty, {0, ""});
    }
}

}  // namespace
}  // namespace host
