// `pagerfwd trace` on traces that the real library has written, on simulated lines.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/support/temp_dir.h"
#include "tests/unit/host/child_process.h"
#include "tests/unit/host/files.h"

namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class TracedPageOf : public ::testing::Test {
 protected:
    TracedPageOf() {
        RunProgram({PAGERFWD_PROGRAM, "init"});
        const ProgramRun run = RunProgram({PAGERFWD_PROGRAM, "import", EXAMPLES "/site.toml"});
        EXPECT_EQ(0, run.exit_code) << run.err;
    }

    // The trace of a test page over these lines.
    static nlohmann::json Trace(const std::string& exchange, const char* pager) {
        const ProgramRun page =
            RunProgram({PAGERSIM_PROGRAM, "--quiet", "--start", "2001-01-08 23:59:45", "--exchange",
                        exchange, "--", PAGERFWD_PROGRAM, "--trace", "test", pager});
        const ProgramRun run = RunProgram({PAGERFWD_PROGRAM, "trace", "--json"});
        EXPECT_EQ(0, run.exit_code) << run.err;
        EXPECT_THAT(run.out, Not(HasSubstr("\"unknown\":")));
        EXPECT_THAT(RunProgram({PAGERFWD_PROGRAM, "trace", "--all"}).out, Not(HasSubstr("? ")));
        const auto pages = nlohmann::json::parse(run.out);
        EXPECT_EQ(1U, pages.size());
        EXPECT_EQ(page.exit_code, pages[0]["result"].is_null() ? 0 : pages[0]["result"].get<int>());
        return pages[0];
    }

    static nlohmann::json TraceWith(const std::string& exchange, const char* pager = "duty phone") {
        WriteFile("exchange.toml", "[[line]]\nport = \"COM 1\"\n" + exchange);
        return Trace("exchange.toml", pager);
    }

    const test_support::TempDir folder;
};

TEST_F(TracedPageOf, EveryTypeIsUnderstood) {
    for (const auto& [pager, type, seconds] : {std::tuple{"duty phone", "sms1", 24},
                                               {"manager phone", "sms2", 37},
                                               {"engineer", "alphanumeric", 24},
                                               {"technician", "numeric", 24},
                                               {"porter", "signal", 24},
                                               {"Osaka office", "ntt", 42}}) {
        const auto page = Trace(EXAMPLES "/exchange.toml", pager);
        EXPECT_EQ(pager, page["pager"]);
        EXPECT_EQ(type, page["type"]);
        EXPECT_EQ("sent", page["outcome"]);
        EXPECT_NEAR(seconds, page["seconds"].get<int>(), 1);
        EXPECT_EQ("2001-01-08", page["date"]);
        EXPECT_EQ("23:59:45", page["time"]);
        EXPECT_TRUE(page["test"].get<bool>());
        int seconds_of_phases = 0;
        for (const auto& phase : page["phases"]) {
            seconds_of_phases += phase.get<int>();
        }
        EXPECT_EQ(page["seconds"], seconds_of_phases);
    }
}

TEST_F(TracedPageOf, EveryFailureSaysWhy) {
    const std::string tap =
        "[[centre]]\nname = \"tap\"\nprotocol = \"tap\"\nnumbers = [\"5550101\"]\n";
    const auto reason = [](const nlohmann::json& page) {
        EXPECT_EQ("not sent", page["outcome"]);
        return page["reason"].get<std::string>();
    };
    EXPECT_THAT(reason(TraceWith(tap + "calls = \"busy\"\n")), HasSubstr("the modem said BUSY"));
    EXPECT_THAT(reason(TraceWith("dial_tone = false\n" + tap)),
                HasSubstr("the modem said NO DIALTONE"));
    EXPECT_THAT(reason(TraceWith("powered = false\n" + tap)),
                HasSubstr("the modem didn't answer: waited 2 s for OK, heard nothing"));
    EXPECT_THAT(reason(TraceWith(tap + "answer = 512\n")),
                HasSubstr("no EOT from D1 received; waited 30 s for <cr><ack><cr>, heard "));
    EXPECT_THAT(reason(TraceWith(tap + "answer = 515\ndrop_after_saying = 37\n")),
                HasSubstr("the centre said 515 Message format error, then the modem NO CARRIER"));
    EXPECT_THAT(reason(TraceWith(tap + "silent_after = 0\n")), HasSubstr("no ID= received"));
    EXPECT_THAT(reason(TraceWith(tap + "ends = false\n")), HasSubstr("no EOT at end of dialog"));
    WriteFile("none.toml", "[[line]]\nport = \"COM 2\"\n");
    EXPECT_THAT(reason(Trace("none.toml", "duty phone")), HasSubstr("no line"));
}

}  // namespace
