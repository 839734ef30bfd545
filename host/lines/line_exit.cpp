// Ends of lines, in words. Tested by tests/unit/host/line_health_test.cpp.
#include "host/lines/line_exit.h"

#include <sys/wait.h>

namespace host {
namespace {

bool Was(int status, LineExit end) {
    return WIFEXITED(status) && static_cast<LineExit>(WEXITSTATUS(status)) == end;
}

}  // namespace

const char* ReasonOf(int status) {
    if (!WIFEXITED(status)) {
        return "its process was killed";
    }
    switch (static_cast<LineExit>(WEXITSTATUS(status))) {
        case LineExit::kDone:
            return "its process ended";
        case LineExit::kTaken:
            return "its device is used already";
        case LineExit::kStuck:
            return "it was stuck";
        case LineExit::kNoDevice:
            return "its device can't be opened";
        case LineExit::kSilent:
            return "its modem doesn't answer";
        case LineExit::kNoTone:
            return "its modem hears no dial tone";
        case LineExit::kLeaseOver:
            return "it ended itself, since its node's lease was over";
        case LineExit::kNotOurs:
            return "it ended itself, since others have taken its pages";
        case LineExit::kCannot:
            break;
    }
    return "its process can't do its work";
}

bool WasStuck(int status) {
    return Was(status, LineExit::kStuck);
}

bool WasFenced(int status) {
    return Was(status, LineExit::kLeaseOver) || Was(status, LineExit::kNotOurs);
}

}  // namespace host
