// pagersim: runs programs on simulated modems and paging centres. Tested by
// tests/unit/sim/pagersim_test.cpp and joined_world_test.cpp.
#include <string_view>

#include "sim/runner/command_line.h"
#include "sim/runner/commands.h"
#include "sim/runner/options.h"
#include "sim/serve/serve.h"

namespace pagersim {
namespace {

template <typename Options, typename Deed>
int Do(const Parsed<Options>& parsed, Deed deed) {
    return parsed.exit_status ? *parsed.exit_status : Guarded([&] { return deed(parsed.options); });
}

int Main(int count, const char* const* arguments) {
    const std::string_view subcommand = count > 1 ? arguments[1] : "";
    if (subcommand == "serve") {
        return ServeMain(count - 1, arguments + 1);
    }
    if (subcommand == "world") {
        return Do(ParseWorldOptions(count - 1, arguments + 1), ServeWorld);
    }
    if (subcommand == "join") {
        return Do(ParseJoinOptions(count - 1, arguments + 1),
                  [](const JoinOptions& options) -> int { JoinWorld(options); });
    }
    return Do(ParseOptions(count, arguments), RunCommand);
}

}  // namespace
}  // namespace pagersim

int main(int count, char** arguments) {
    return pagersim::Main(count, arguments);
}
