// pagerfwd watch, on a terminal and elsewhere.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>

#include "tests/support/planted.h"
#include "tests/unit/host/cli_fixture.h"

namespace {

using ::testing::AllOf;
using ::testing::Each;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

class Watch : public CliFixture {
 protected:
    Watch() { EXPECT_EQ(0, Run({"init"}).exit_code); }

    static void AddEnded(int count) {
        Execute("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " +
                std::to_string(count) +
                ") INSERT INTO Host_History (at, change, alarm, alarm_group, pager, state, tries)"
                " SELECT 978948000 + i, 'written', 100 + i, 'ops', 'duty', '4', '0' FROM n");
    }
    static void AddPending(int count) {
        for (int i = 1; i <= count; ++i) {
            Execute(
                "INSERT INTO AlarmFwd_PagerEvents (AlmLogID, AlmGroup, PagerDescr, PagerState)"
                " VALUES ('" +
                std::to_string(i) + "', 'ops', 'duty', '2')");
        }
    }

    static bool IsQuiet(int terminal) {
        pollfd more{terminal, POLLIN, 0};
        return poll(&more, 1, 100) == 0;
    }

    // The rows of the first picture on a terminal of this size.
    static std::vector<std::string> Picture(unsigned short rows, unsigned short columns,
                                            const char* ended = nullptr) {
        const std::string program = test_support::WithPlanted(PAGERFWD_PROGRAM);
        winsize size{rows, columns, 0, 0};
        int master = -1;
        const pid_t child = forkpty(&master, nullptr, nullptr, &size);
        if (child == 0) {
            execl(program.c_str(), "pagerfwd", "--database", "site.db", "watch", "--every", "3600",
                  ended == nullptr ? nullptr : "--ended", ended, nullptr);
            _exit(127);
        }
        std::string shown;
        std::array<char, 4096> part{};
        // The terminal drops what its program leaves behind unread.
        bool is_asked = false;
        for (ssize_t got = 0; (got = read(master, part.data(), part.size())) > 0;) {
            shown.append(part.data(), static_cast<size_t>(got));
            if (!is_asked && shown.find("engine:") != std::string::npos && IsQuiet(master)) {
                is_asked = true;
                kill(child, SIGTERM);
            }
        }
        close(master);
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_EQ(0, WEXITSTATUS(status));
        return RowsOf(shown);
    }

    static std::vector<std::string> RowsOf(std::string shown) {
        EXPECT_THAT(shown, StartsWith("\x1b[H"));
        shown.erase(0, 3);
        for (const char* mark : {"\r", "\x1b[K", "\x1b[J"}) {
            for (size_t at = 0; (at = shown.find(mark)) != std::string::npos;) {
                shown.erase(at, std::string(mark).size());
            }
        }
        std::vector<std::string> rows;
        while (!shown.empty()) {
            const size_t end = std::min(shown.find('\n'), shown.size());
            rows.push_back(shown.substr(0, end));
            shown.erase(0, end + 1);
        }
        while (!rows.empty() && rows.back().empty()) {
            rows.pop_back();
        }
        return rows;
    }
};

TEST_F(Watch, FillsTheScreenWithWhatHasEndedLast) {
    AddEnded(50);
    const std::vector<std::string> rows = Picture(20, 100);
    ASSERT_THAT(rows, SizeIs(20));
    EXPECT_THAT(rows[0], HasSubstr("engine: not running"));
    EXPECT_EQ("ended, the last 16:", rows[2]);
    EXPECT_THAT(rows[3], StartsWith("ALARM"));
    EXPECT_THAT(rows[4], StartsWith("135 "));
    EXPECT_THAT(rows[19], StartsWith("150 "));
}

TEST_F(Watch, ShowsNoMoreThanIsAskedFor) {
    AddEnded(50);
    EXPECT_THAT(Picture(20, 100, "2"), SizeIs(6));
    EXPECT_THAT(Picture(20, 100, "30"), SizeIs(20));
}

TEST_F(Watch, ShowsWhatIsPendingFirst) {
    AddEnded(50);
    AddPending(9);
    const std::vector<std::string> rows = Picture(14, 100);
    ASSERT_THAT(rows, SizeIs(13));
    EXPECT_EQ("pending: 9", rows[1]);
    EXPECT_EQ("ended, the last 0:", rows[12]);
    EXPECT_EQ("ended, the last 1:", Picture(15, 100).at(12));
}

TEST_F(Watch, CutsWhatTheScreenDoesNotHold) {
    AddPending(30);
    const std::vector<std::string> rows = Picture(10, 40);
    ASSERT_THAT(rows, SizeIs(10));
    EXPECT_EQ("pending: 30, the first 6", rows[1]);
    EXPECT_THAT(rows, Each(AllOf(SizeIs(::testing::Le(40)), Not(HasSubstr("\x1b")))));
    EXPECT_THAT(Picture(2, 40), SizeIs(2));
}

TEST_F(Watch, WritesWhatIsNewWhereThereIsNoTerminal) {
    AddEnded(50);
    ChildProcess watch({PAGERFWD_PROGRAM, "--database", "site.db", "watch", "--every", "0.1"});
    EXPECT_THAT(watch.ReadLine(), HasSubstr("engine: not running"));
    EXPECT_EQ("pending: 0", watch.ReadLine());
    EXPECT_EQ("ended, the last 10:", watch.ReadLine());
    for (int row = 0; row < 11; ++row) {
        watch.ReadLine();
    }
    AddPending(1);
    EXPECT_THAT(watch.ReadLine(), HasSubstr("engine: not running"));
    EXPECT_EQ("pending: 1", watch.ReadLine());
}

}  // namespace
