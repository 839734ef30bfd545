// What pagersim says of itself when it is asked.
#include <gmock/gmock.h>

#include "tests/unit/sim/pagersim_fixture.h"

namespace pagersim {
namespace {

using ::testing::HasSubstr;
using ::testing::MatchesRegex;

class PagersimHelp : public PagersimTest, public ::testing::WithParamInterface<const char*> {};

// A sentence, the lines that it goes on in, and how a command or an option is called.
constexpr const char* kLine =
    "([A-Za-z].*)?|  [A-Z].*[.:]"
    "| {7}pagersim .*| {4}(pagersim|picocom) .*| {8}-- pagerfwd .*"
    "|  [a-z]+ +[A-Z].*|  [A-Z]+ TEXT REQUIRED +[A-Z].*"
    "|  (-[a-z],)?--[a-z-]+(,--[a-z-]+)*"
    "( [A-Z]+(:INT in .[0-9]+ - [0-9]+.)?(=[^ ]+| [.]{3})?)?( +[A-Z].*)?"
    "| {30}[A-Za-z([].*";

TEST_P(PagersimHelp, ExplainsItsWordsInSentences) {
    const std::string command = GetParam();
    const Result result = Run(command.empty() ? Words{"--help"} : Words{command, "--help"});
    EXPECT_EQ(0, result.status);
    EXPECT_THAT(result.out, HasSubstr(command.empty() ? "Usage: pagersim [OPTIONS] -- COMMAND"
                                                      : "Usage: pagersim " + command));
    std::istringstream help(result.out);
    for (std::string line; std::getline(help, line);) {
        EXPECT_THAT(line, MatchesRegex(kLine));
    }
}

INSTANTIATE_TEST_SUITE_P(Commands, PagersimHelp, ::testing::Values("", "world", "join", "serve"));

}  // namespace
}  // namespace pagersim
