// Whole requests of HTTP, through the server as it is: any bytes of a client who then has nothing
// more to say are answered or not, and end. The database isn't there.
#include <sys/socket.h>
#include <sys/un.h>

#include <cstring>
#include <sstream>
#include <string>

#include "host/web/api.h"
#include "host/web/server.h"
#include "tests/fuzz/folder.h"
#include "tests/fuzz/input.h"
#include "tests/support/serving.h"

namespace {

using fuzz::Expect;

// Serves as long as the program lives.
class Server {
 private:
    static host::WebLimits Limits() {
        host::WebLimits limits;
        limits.every = std::chrono::milliseconds(0);
        return limits;
    }
    host::WebAnswer Answer(const host::WebRequest& asked) {
        Expect(asked.body.size() <= 1024 * 1024, "a body has a bound");
        Expect(asked.target.size() + asked.token.size() + asked.cookies.size() <= 8 * 1024,
               "a header has a bound");
        said_.str("");
        return api_.Answer(asked);
    }

    std::ostringstream said_;
    host::OperatorLog log_{said_, true};
    host::Api api_{"none.db", log_};
    const test_support::Serving<host::WebServer> serving_{
        [this](const host::WebRequest& asked) { return Answer(asked); }, Limits()};
};

std::string AnswerTo(std::string_view bytes) {
    const host::Descriptor client(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strcpy(&address.sun_path[0], test_support::kServedAt);
    Expect(
        connect(client.Number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0,
        "it listens");
    while (!bytes.empty()) {
        const ssize_t sent = send(client.Number(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0) {
            break;
        }
        bytes.remove_prefix(static_cast<size_t>(sent));
    }
    shutdown(client.Number(), SHUT_WR);
    std::string all;
    char buffer[4096];
    for (ssize_t count = 0; (count = recv(client.Number(), buffer, sizeof buffer, 0)) > 0;) {
        all.append(buffer, static_cast<size_t>(count));
    }
    return all;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const fuzz::InOwnFolder folder;
    static const Server server;
    const std::string answer = AnswerTo(fuzz::View(data, size));
    Expect(answer.empty() || answer.compare(0, 9, "HTTP/1.1 ") == 0, "an answer is one of HTTP");
    Expect(answer.find("none.db") == std::string::npos, "no answer names the database");
    return 0;
}
