// The SNPP server, by Boost.Asio. Tested by tests/unit/host/snpp_server_test.cpp.
#include "host/snpp/server.h"

#include <algorithm>
#include <boost/asio/buffer.hpp>
#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/asio/thread_pool.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/basic_stream.hpp>
#include <set>
#include <utility>

#include "host/net/acceptor.h"
#include "host/net/rate.h"

namespace host {
namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
using Error = boost::system::error_code;
using Protocol = Acceptor::Protocol;
using Stream = beast::basic_stream<Protocol>;
using Clock = std::chrono::steady_clock;

constexpr size_t kLongestLine = 8 * 1024;
constexpr size_t kHandlers = 2;

std::string Closing(const char* why) {
    return std::string(kSnppClosing) + why + "\r\n";
}

}  // namespace

class SnppServer::Impl {
 public:
    Impl(std::vector<Descriptor> listeners, Greeter greeter, const SnppLimits& limits)
        : greeter_(std::move(greeter)),
          limits_(limits),
          rate_(limits.burst, limits.every),
          acceptor_(io_, std::move(listeners),
                    [this](Protocol::socket socket, const std::string& source) {
                        Begin(std::move(socket), source);
                    }) {}

    void Run() {
        acceptor_.Start();
        io_.run();
        handlers_.join();
    }

    void Stop() {
        asio::post(io_, [this] { End(); });
    }

 private:
    class Session;

    void Begin(Protocol::socket socket, const std::string& source);
    void End();

    const Greeter greeter_;
    const SnppLimits limits_;
    std::set<Session*> sessions_;  // outlives what io_ still holds of them
    asio::io_context io_{1};
    asio::thread_pool handlers_{kHandlers};
    RateLimit rate_;  // by the thread that runs, as all that follows
    Acceptor acceptor_;
    bool ending_ = false;
};

// A connection: a line, what is answered to it, the next line.
class SnppServer::Impl::Session : public std::enable_shared_from_this<Session> {
 public:
    Session(Impl& server, Stream stream, std::string source)
        : server_(server),
          stream_(std::move(stream)),
          source_(std::move(source)),
          dialogue_(server.greeter_(source_)),
          until_(Clock::now() + server.limits_.session) {
        server_.sessions_.insert(this);
    }
    ~Session() { server_.sessions_.erase(this); }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    void Write(SnppAnswer answer) {
        answer_ = std::move(answer);
        Limit();
        asio::async_write(stream_, asio::buffer(answer_.text),
                          [self = shared_from_this()](const Error& error, size_t) {
                              if (!error && !self->answer_.ends) {
                                  self->GoOn();
                              }
                          });
    }

    void EndIfIdle() {
        if (idle_) {
            stream_.close();
        }
    }

 private:
    void Limit() { stream_.expires_at(std::min(Clock::now() + server_.limits_.line, until_)); }

    void GoOn() {
        if (server_.ending_) {
            return Write({Closing("the server ends"), true});
        }
        idle_ = true;
        Limit();
        asio::async_read_until(stream_, asio::dynamic_buffer(received_, kLongestLine), '\n',
                               [self = shared_from_this()](const Error& error, size_t length) {
                                   self->idle_ = false;
                                   error ? self->Fail(error) : self->Take(length);
                               });
    }

    void Fail(const Error& error) {
        if (error == asio::error::not_found) {
            Write({Closing("a line is longer than 8 KiB"), true});
        }
    }

    void Take(size_t length) {
        std::string line = received_.substr(0, length);
        received_.erase(0, length);
        line.erase(line.size() >= 2 && line[line.size() - 2] == '\r' ? line.size() - 2
                                                                     : line.size() - 1);
        if (!server_.rate_.Take(source_, RateLimit::Clock::now())) {
            return Write({Closing("too many lines from this source"), true});
        }
        Answer(std::move(line));
    }

    void Answer(std::string line) {
        stream_.expires_never();
        asio::post(server_.handlers_, [self = shared_from_this(), line = std::move(line),
                                       work = asio::make_work_guard(server_.io_)]() mutable {
            SnppAnswer answer = self->dialogue_.Hear(line);
            asio::io_context& io = self->server_.io_;
            // Moved, so that the session ends in the thread that knows all of them.
            asio::post(io, [self = std::move(self), answer = std::move(answer)]() mutable {
                answer.text.empty() ? self->GoOn() : self->Write(std::move(answer));
            });
        });
    }

    Impl& server_;
    Stream stream_;
    const std::string source_;
    SnppDialogue dialogue_;
    const Clock::time_point until_;
    std::string received_;
    SnppAnswer answer_;
    bool idle_ = false;
};

void SnppServer::Impl::Begin(Protocol::socket socket, const std::string& source) {
    const bool full = sessions_.size() >= limits_.sessions;
    const auto session = std::make_shared<Session>(*this, Stream(std::move(socket)), source);
    session->Write(full ? SnppAnswer{Closing("too many sessions"), true}
                        : SnppAnswer{kSnppGreeting});
}

void SnppServer::Impl::End() {
    ending_ = true;
    acceptor_.Stop();
    const std::set<Session*> sessions = sessions_;
    for (Session* const session : sessions) {
        session->EndIfIdle();
    }
}

SnppServer::SnppServer(std::vector<Descriptor> listeners, Greeter greeter, const SnppLimits& limits)
    : impl_(std::make_unique<Impl>(std::move(listeners), std::move(greeter), limits)) {}

SnppServer::~SnppServer() = default;

void SnppServer::Run() {
    impl_->Run();
}

void SnppServer::Stop() {
    impl_->Stop();
}

}  // namespace host
