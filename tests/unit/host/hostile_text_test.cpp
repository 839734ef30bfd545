// Texts that nobody would write, in every place from which one reaches a terminal: arguments, the
// site file, the tables, the trace. Quotes, backslashes, percent signs, control bytes, 64 KiB.
//
// Where such texts go, and what holds them:
//   a format         engine, modem, tables: the texts with percent signs of page_send_test,
//                    *_dialogue.cpp, trace_test, pager_settings_test;
//                    tests/engine/hostile_text_test
//   a condition      conditions_test, store_contract_test, pager_fwd_events_test;
//   tests/fuzz/conditions a buffer         string_*_test, printable_form_test, tty_text_test;
//   tests/fuzz/tables and modem the line         tests/engine/hostile_text_test, *_dialogue.cpp;
//   tests/fuzz/modem the own log      operator_log_test a terminal       here: every command;
//   printable_test, trace_view_test; tests/fuzz/trace_view and
//                    site_file
//   the trace file   raw, so that nothing is lost: tests/engine/hostile_text_test
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

#include "host/text/printable.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/host/child_process.h"
#include "tests/unit/host/files.h"

namespace {

using ::testing::HasSubstr;

// As a TOML text would be, too: every byte of it can stand in an argument.
const std::string kHostile =
    "\"'\\ %s%n%d \x1b]0;x\x07\x1b[2J \xC2\x9B"
    "31m\r\x7F\t\xE2\x80\xAE";
const std::string kVeryLong = kHostile + std::string(65536, 'x');

// Lines of UTF-8 in which nothing steers a terminal.
void ExpectFitForTerminal(const std::string& text) {
    size_t begin = 0;
    while (begin < text.size()) {
        const size_t end = std::min(text.find('\n', begin), text.size());
        const std::string line = text.substr(begin, end - begin);
        EXPECT_EQ(host::Printable(line), line) << line.substr(0, 300);
        begin = end + 1;
    }
}

struct Hostile {
    const char* name;
    std::string text;
};

std::ostream& operator<<(std::ostream& out, const Hostile& hostile) {
    return out << hostile.name;
}

class HostileText : public ::testing::TestWithParam<Hostile> {
 protected:
    static const std::string& Text() { return GetParam().text; }

    HostileText() {
        unsetenv("PAGERFWD_DATABASE");
        WriteFile("site.toml", Site(""));
        EXPECT_EQ(0, Run({"init"}).exit_code);
        EXPECT_EQ(0, Run({"import", "site.toml"}).exit_code);
    }

    // Its one pager is called `name`.
    static std::string Site(const std::string& name) {
        return "[[port]]\nname = \"COM 1\"\n[port.pager]\ndial = \"ATDT1\"\n"
               "[[pager]]\ndescription = " +
               Quoted("duty" + name) + "\nowner = " + Quoted(name) +
               "\ntype = \"alphanumeric\"\nnumber = \"1\"\n"
               "[[route]]\npagers = [" +
               Quoted("duty" + name) + "]\n";
    }

    // As TOML has it.
    static std::string Quoted(const std::string& text) {
        std::string quoted = "\"";
        for (const char c : text) {
            const auto byte = static_cast<unsigned char>(c);
            if (byte < 0x20 || byte == 0x7F) {
                constexpr char kDigits[] = "0123456789ABCDEF";
                quoted += std::string("\\u00") + kDigits[byte >> 4U] + kDigits[byte & 0xFU];
            } else {
                quoted += (c == '"' || c == '\\' ? "\\" : "") + std::string(1, c);
            }
        }
        return quoted + "\"";
    }

    // What it printed is fit for a terminal, whatever came of it.
    static ProgramRun Run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), PAGERFWD_PROGRAM);
        const ProgramRun run = RunProgram(arguments);
        ExpectFitForTerminal(run.out);
        ExpectFitForTerminal(run.err);
        EXPECT_GE(8, run.exit_code) << "ended by a signal";
        return run;
    }

    const test_support::TempDir folder;
};

TEST_P(HostileText, OfAnArgumentReachesNoTerminal) {
    const std::string& text = Text();
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{text},
                                               {"--" + text},
                                               {"test", text},
                                               {"explain", text},
                                               {"explain", "duty", "--text", text},
                                               {"in-hours", text},
                                               {"check", text},
                                               {"import", text},
                                               {"trace", text},
                                               {"trace", "--pager", text},
                                               {"trace", "--since", text},
                                               {"trace", "--encoding", text},
                                               {"log", text},
                                               {"alarm", "ack", text},
                                               {"alarm", "list", "--count", text},
                                               {"alarm", "raise", "--severity", text, "x"},
                                               {"--database", text, "status"},
                                               {"--library", text, "test", "duty"}}) {
        SCOPED_TRACE(arguments.size() > 1 ? arguments[0] + " " + arguments[1].substr(0, 20)
                                          : std::string("the command itself"));
        Run(arguments);
    }
}

TEST_P(HostileText, OfAnAlarmReachesNoTerminal) {
    // What steers has become blanks.
    const ProgramRun taken =
        Run({"alarm", "raise", "--group", "g/" + Text(), "--server", Text(), Text()});
    ASSERT_EQ(0, taken.exit_code) << taken.err;
    const std::string number = taken.out.substr(0, taken.out.find('\n'));

    EXPECT_THAT(Run({"alarm", "list"}).out, HasSubstr(R"("'\ %s%n%d  ]0;x )"));
    EXPECT_THAT(Run({"alarm", "list", "--json"}).out, HasSubstr(R"(\"'\\ %s%n%d  ]0;x )"));
    EXPECT_EQ(0, Run({"status"}).exit_code);
    EXPECT_EQ(0, Run({"status", "--json"}).exit_code);
    EXPECT_THAT(Run({"log", number}).out, HasSubstr(R"("'\ %s%n%d  ]0;x )"));
    EXPECT_EQ(0, Run({"log", number, "--json"}).exit_code);
    EXPECT_EQ(0, Run({"alarm", "ack", number}).exit_code);
}

TEST_P(HostileText, OfASiteFileReachesNoTerminal) {
    WriteFile("hostile.toml", Site(Text()));
    const ProgramRun checked = Run({"check", "hostile.toml"});
    EXPECT_THAT(checked.out, HasSubstr(R"(\x1b)"));
    EXPECT_EQ(checked.exit_code, Run({"import", "hostile.toml"}).exit_code == 0 ? 0 : 1);
    WriteFile("hostile.toml", Text());
    EXPECT_EQ(1, Run({"check", "hostile.toml"}).exit_code) << "no TOML";
    WriteFile("hostile.toml", Quoted(Text()) + " = " + Quoted(Text()));
    EXPECT_EQ(1, Run({"check", "hostile.toml"}).exit_code) << "an unknown key";
}

TEST_P(HostileText, OfATraceReachesNoTerminal) {
    WriteFile("pageprot.txt", "10:00:00\t*** START PAGING ***\n10:00:00\tTry to page for " +
                                  Text() + " at 01/08/01\t10:00:00\t: \n10:00:01\t" + Text() +
                                  "\n10:00:02\t*** END PAGING ***\n");
    EXPECT_THAT(Run({"trace"}).out, HasSubstr(R"("'\ %s%n%d )"));
    EXPECT_EQ(0, Run({"trace", "--all"}).exit_code);
    EXPECT_EQ(0, Run({"trace", "--json"}).exit_code);
    EXPECT_EQ(0, Run({"trace", "--page", "1", "--svg", "page.svg"}).exit_code);
    ExpectFitForTerminal(ReadFile("page.svg"));
}

INSTANTIATE_TEST_SUITE_P(Texts, HostileText,
                         ::testing::Values(Hostile{"OfSigns", kHostile},
                                           Hostile{"Of64KiB", kVeryLong}),
                         [](const auto& each) { return std::string(each.param.name); });

}  // namespace
