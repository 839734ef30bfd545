// What a process that serves one line answers the library's openings and
// pauses, with the library loaded as it is shipped, on simulated lines.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <sstream>

#include "tests/e2e/run_fixture.h"

namespace {

class LineProcess : public RunTest {
 protected:
    LineProcess() { setenv("NX_PAGEPROT", "1", 1); }
    ~LineProcess() override { unsetenv("NX_PAGEPROT"); }

    // Runs it at a modem on this port, and returns the trace.
    std::string Run(const std::string& port, const std::string& device, const std::string& bell) {
        for (const char* file : {"line.db", "line.db-wal", "line.db-shm"}) {
            std::filesystem::remove(file);
        }
        // "tech" stays pending between its pages, so that the worker does not end.
        MakeSite("line.db", std::regex_replace(kSite, std::regex("delay = 1"), "delay = 30"));
        WriteFile("exchange.toml", std::regex_replace(exchange, std::regex("COM 1"), port));
        const ProgramRun run = RunProgram({PAGERSIM_PROGRAM, "--quiet", "--report", "report.json",
                                           "--", LINE_PROCESS, LIBRARY, "line.db", device, bell});
        EXPECT_EQ(0, run.exit_code) << run.err;
        CountPages();
        return TextOf("pageprot.txt");
    }

    // A handle stands in the trace as the place where it is kept.
    static std::string WithoutHandles(const std::string& trace) {
        return std::regex_replace(
            trace, std::regex("(WaitString\\( int |OpenCOMPort\\(\\) == )-?[0-9]+"), "$1H");
    }

    // The first line in which the second differs.
    static std::string Difference(const std::string& first, const std::string& second) {
        std::istringstream firsts(first), seconds(second);
        std::string one, other;
        while (std::getline(firsts, one)) {
            if (!std::getline(seconds, other) || one != other) {
                return one + " / " + other;
            }
        }
        return std::getline(seconds, other) ? "/ " + other : "";
    }

    // When each page began and ended, in seconds of the day: A begins, A ends, B
    // begins, ...
    static std::vector<int> TimesIn(const std::string& trace) {
        std::vector<int> times;
        std::istringstream lines(trace);
        for (std::string line; std::getline(lines, line);) {
            if (line.find("*** START PAGING ***") != std::string::npos ||
                line.find("*** END PAGING ***") != std::string::npos) {
                times.push_back(std::stoi(line) * 3600 + std::stoi(line.substr(3)) * 60 +
                                std::stoi(line.substr(6)));
            }
        }
        return times;
    }
};

TEST_F(LineProcess, PagesGoOutByADeviceElsewhereWithTheSameTrace) {
    const std::string usual = Run("COM 1", "-", "-");
    const std::map<std::string, int> delivered = pages;
    EXPECT_EQ(3, PageCount());
    pages.clear();
    const std::string elsewhere = Run("COM 5", "/dev/ttyS4", "-");
    EXPECT_EQ(delivered, pages);
    EXPECT_EQ("", Difference(WithoutHandles(usual), WithoutHandles(elsewhere)));
}

TEST_F(LineProcess, BellSendsWhatIsHandedOverMeanwhileAtOnce) {
    const std::vector<int> silent = TimesIn(Run("COM 1", "-", "-"));
    ASSERT_LE(6U, silent.size());
    EXPECT_LE(55, silent[2] - silent[1]) << "B, handed over while A was on the line";
    EXPECT_LE(50, silent[4] - silent[3]) << "C, handed over in the pause";

    const std::vector<int> rung = TimesIn(Run("COM 1", "-", "ring"));
    ASSERT_LE(6U, rung.size());
    EXPECT_GE(1, rung[2] - rung[1]);
    EXPECT_GE(7, rung[4] - rung[3]);
}

}  // namespace
