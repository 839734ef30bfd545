// Running a command, serving a world, joining one. Tested by tests/unit/sim/pagersim_test.cpp and
// joined_world_test.cpp.
#include "sim/runner/commands.h"

#include <sys/socket.h>

#include <algorithm>
#include <string_view>

#include "sim/runner/programs.h"
#include "sim/runner/scratch_folder.h"
#include "sim/runner/session.h"
#include "sim/runner/world_folder.h"
#include "sim/world/messages.h"

namespace pagersim {
namespace {

// What tells the commands of a world apart, whenever they join.
std::string NameOf(const std::vector<std::string>& command) {
    std::string name;
    for (const std::string& word : command) {
        name += word + '\0';
    }
    return name.substr(0, kMostPayload);
}

void SayName(int connection, const std::string& name) {
    Request request{};
    request.ask = Question::kJoin;
    std::string message(reinterpret_cast<const char*>(&request), sizeof request);
    message += name;
    send(connection, message.data(), message.size(), MSG_NOSIGNAL);
}

}  // namespace

int RunCommand(const RunnerOptions& options) {
    Session session(options);
    const ScratchFolder scratch;
    const std::string socket = scratch.Path("world");
    const Environment environment = EnvironmentFor(socket, scratch.Path("preload"));
    CheckProgram(options.command.front(), environment);
    session.Begin(socket, environment);
    Processes& programs = session.Programs();
    programs.Start(options.command);
    std::for_each(options.beside.begin(), options.beside.end(),
                  [&](const std::string& command) { programs.RunShell(command); });
    const int status = programs.AwaitCommand();
    if (!options.beside.empty()) {
        programs.AskOthers();
    }
    session.World().Resume();
    return session.Finish(status);
}

int ServeWorld(const RunnerOptions& options) {
    Session session(options);
    const WorldFolder folder(options.folder);
    const Environment environment = EnvironmentFor(folder.Socket(), folder.Links());
    session.Begin(folder.Socket(), environment);
    session.World().Await(static_cast<std::size_t>(options.await));
    folder.Publish(environment);
    session.Programs().AwaitEnd(options.until_left);
    return session.Finish(0);
}

void JoinWorld(const JoinOptions& options) {
    const FoundWorld world = FindWorld(options.folder);
    CheckProgram(options.command.front(), world.environment);
    SayName(world.connection.Number(), NameOf(options.command));
    Become(options.command, world.environment);
}

}  // namespace pagersim
