// The proxy. It knows of the protocol (PostgreSQL 15, chapter 55) only where messages end.
#include "tests/support/postgres_proxy.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <list>
#include <new>
#include <stdexcept>
#include <system_error>
#include <vector>

namespace test_support {
namespace {

namespace fs = std::filesystem;

sockaddr_un AddressIn(const fs::path& folder) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    (folder / ".s.PGSQL.5432").string().copy(address.sun_path, sizeof address.sun_path - 1);
    return address;
}

int NewSocket() {
    return socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
}

bool SendAll(int to, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t sent = send(to, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<size_t>(sent));
    }
    return true;
}

// More of what comes; false at its end.
bool Receive(int from, std::string& bytes) {
    std::array<char, 65536> buffer{};
    const ssize_t size = recv(from, buffer.data(), buffer.size(), 0);
    bytes.append(buffer.data(), size > 0 ? static_cast<size_t>(size) : 0);
    return size > 0;
}

// The bytes of the message at this place, its type too; 0 while it isn't whole. The first that a
// client sends has no type.
size_t MessageAt(const std::string& bytes, size_t place, bool has_type) {
    const size_t head = has_type ? 1 : 0;
    if (bytes.size() < place + head + 4) {
        return 0;
    }
    uint32_t size = 0;
    for (size_t i = 0; i < 4; ++i) {
        size = size << 8 | static_cast<unsigned char>(bytes[place + head + i]);
    }
    return bytes.size() < place + head + size ? 0 : head + size;
}

}  // namespace

// What the child does. Both ends of a call, and what the client has sent of a statement so far.
class ProxyProcess {
 public:
    ProxyProcess(PostgresProxy::Plans& plan, const fs::path& server, int listening)
        : plan_(plan), server_(AddressIn(server)), listening_(listening) {}

    [[noreturn]] void Run() {
        for (;;) {
            std::vector<pollfd> look{{listening_, POLLIN, 0}};
            for (const Call& call : calls_) {
                const short events = call.stalled ? 0 : POLLIN;
                look.push_back({call.stalled ? -1 : call.client, events, 0});
                look.push_back({call.stalled ? -1 : call.server, events, 0});
            }
            constexpr int kMoment = 20;  // ms; the plan may change meanwhile
            poll(look.data(), plan_.stalls ? 0 : look.size(), kMoment);
            if (plan_.refuses) {
                CutAll();
            } else if (!plan_.stalls) {
                Work(look);
            }
        }
    }

 private:
    struct Call {
        int client;
        int server;
        bool begun = false;  // the first message has been seen
        bool stalled = false;
        std::string asked{};  // by the client, and not passed on
    };

    void Work(const std::vector<pollfd>& look) {
        size_t place = 1;
        for (auto call = calls_.begin(); call != calls_.end(); place += 2) {
            const bool goes_on = (look[place].revents == 0 || FromClient(*call)) &&
                                 (look[place + 1].revents == 0 || FromServer(*call));
            call = goes_on ? std::next(call) : Cut(call);
        }
        if (look[0].revents != 0) {
            TakeCall();
        }
    }

    void TakeCall() {
        Call call{accept(listening_, nullptr, nullptr), NewSocket()};
        calls_.push_back(call);
        if (connect(call.server, reinterpret_cast<const sockaddr*>(&server_), sizeof server_) !=
            0) {
            Cut(std::prev(calls_.end()));
        }
    }

    std::list<Call>::iterator Cut(std::list<Call>::iterator call) {
        close(call->client);
        close(call->server);
        return calls_.erase(call);
    }

    void CutAll() {
        while (!calls_.empty()) {
            Cut(calls_.begin());
        }
        pollfd look{listening_, POLLIN, 0};
        if (poll(&look, 1, 0) > 0) {
            close(accept(listening_, nullptr, nullptr));
        }
    }

    static bool FromServer(const Call& call) {
        std::string bytes;
        return Receive(call.server, bytes) && SendAll(call.client, bytes);
    }

    // Passed on by whole statements: a simple one ('Q'), or all up to a 'S'ync.
    bool FromClient(Call& call) {
        if (!Receive(call.client, call.asked)) {
            return false;
        }
        size_t place = 0;
        while (const size_t size = MessageAt(call.asked, place, call.begun)) {
            const char type = call.begun ? call.asked[place] : '\0';
            place += size;
            if (type == 'Q' || type == 'S' || !call.begun || type == 'p' || type == 'X') {
                const std::string statement = call.asked.substr(0, place);
                call.asked.erase(0, place);
                place = 0;
                if (!PassOn(call, statement, type == 'Q' || type == 'S')) {
                    return false;
                }
            }
            call.begun = true;
        }
        return true;
    }

    bool PassOn(Call& call, const std::string& statement, bool counts) {
        using Fault = PostgresProxy::Fault;
        const auto fault = static_cast<Fault>(plan_.fault.load());
        if (!counts || ++plan_.count != plan_.statement || fault == Fault::kNone) {
            return SendAll(call.server, statement);
        }
        plan_.refuses = plan_.refuses_once_failed.load();
        plan_.failed = true;
        if (fault == Fault::kStall) {
            call.stalled = true;
            return true;
        }
        if (fault == Fault::kCutBehind && SendAll(call.server, statement)) {
            AwaitAnswer(call.server);
        }
        return false;
    }

    // Up to 'Z': ready for the next.
    static void AwaitAnswer(int server) {
        std::string answer;
        size_t place = 0;
        while (Receive(server, answer)) {
            while (const size_t size = MessageAt(answer, place, true)) {
                if (answer[place] == 'Z') {
                    return;
                }
                place += size;
            }
        }
    }

    PostgresProxy::Plans& plan_;
    const sockaddr_un server_;
    const int listening_;
    std::list<Call> calls_;
};

PostgresProxy::PostgresProxy(const fs::path& server, const std::string& name)
    : folder_(server / name),
      plan_(new (mmap(nullptr, sizeof(Plans), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS,
                      -1, 0)) Plans) {
    fs::create_directory(folder_);
    const int listening = NewSocket();
    const sockaddr_un address = AddressIn(folder_);
    if (bind(listening, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(listening, 8) != 0) {
        throw std::runtime_error("no socket in " + folder_.string());
    }
    process_ = fork();
    if (process_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        ProxyProcess(*plan_, server, listening).Run();
    }
    close(listening);
}

PostgresProxy::~PostgresProxy() {
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
    munmap(plan_, sizeof(Plans));
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
}

void PostgresProxy::Plan(Fault fault, int statement) {
    plan_->fault = static_cast<int>(fault);
    plan_->statement = statement;
    plan_->count = 0;
    plan_->failed = false;
}

void PostgresProxy::Refuse(bool refuses) {
    plan_->refuses = refuses;
}

void PostgresProxy::RefuseOnceFailed(bool refuses) {
    plan_->refuses_once_failed = refuses;
    plan_->refuses = plan_->refuses && refuses;
}

}  // namespace test_support
