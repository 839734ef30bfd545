// The SNPP server, by Boost.Asio. Tested by tests/unit/host/snpp_server_test.cpp.
#include "host/snpp/server.h"

#include <algorithm>
#include <boost/asio/buffer.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/asio/write.hpp>
#include <utility>

#include "host/net/server_frame.h"

namespace host {
namespace {

namespace asio = boost::asio;
using Error = boost::system::error_code;
using Stream = ServerFrame::Stream;
using Clock = std::chrono::steady_clock;

constexpr size_t kLongestLine = 8 * 1024;

std::string Closing(const char* why) {
    return std::string(kSnppClosing) + why + "\r\n";
}

}  // namespace

// What all sessions share.
class SnppServer::Impl {
 public:
    Impl(std::vector<Descriptor> listeners, Greeter greeter, const SnppLimits& limits)
        : greeter_(std::move(greeter)),
          limits_(limits),
          frame_(std::move(listeners), limits.sessions, RateLimit(limits.burst, limits.every),
                 [this](Stream stream, const std::string& source) {
                     Begin(std::move(stream), source);
                 }) {}

    void Run() { frame_.Run(); }
    void Stop() { frame_.Stop(); }

 private:
    class Session;

    void Begin(Stream stream, const std::string& source);

    const Greeter greeter_;
    const SnppLimits limits_;
    ServerFrame frame_;  // ends first: its sessions use the rest
};

// A connection: a line, what is answered to it, the next line.
class SnppServer::Impl::Session : public ServerSession {
 public:
    Session(Impl& server, Stream stream, const std::string& source)
        : ServerSession(server.frame_, std::move(stream), source),
          server_(server),
          dialogue_(server.greeter_(source)),
          until_(Clock::now() + server.limits_.session) {}

    void Write(SnppAnswer answer) {
        answer_ = std::move(answer);
        Limit();
        asio::async_write(stream_, asio::buffer(answer_.text),
                          [self = shared_from_this(), this](const Error& error, size_t) {
                              if (!error && !answer_.ends) {
                                  GoOn();
                              }
                          });
    }

 private:
    void Limit() { stream_.expires_at(std::min(Clock::now() + server_.limits_.line, until_)); }

    void GoOn() {
        if (frame_.IsEnding()) {
            return Write({Closing("the server ends"), true});
        }
        idle_ = true;
        Limit();
        asio::async_read_until(
            stream_, asio::dynamic_buffer(received_, kLongestLine), '\n',
            [self = shared_from_this(), this](const Error& error, size_t length) {
                idle_ = false;
                error ? Fail(error) : Take(length);
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
        if (!frame_.MayAsk(source_)) {
            return Write({Closing("too many lines from this source"), true});
        }
        Answer(std::move(line));
    }

    void Answer(std::string line) {
        Work(
            [this, line = std::move(line)] { return dialogue_.Hear(line); },
            [this](SnppAnswer answer) { answer.text.empty() ? GoOn() : Write(std::move(answer)); });
    }

    Impl& server_;
    SnppDialogue dialogue_;
    const Clock::time_point until_;
    std::string received_;
    SnppAnswer answer_;
};

void SnppServer::Impl::Begin(Stream stream, const std::string& source) {
    const bool full = frame_.IsFull();
    const auto session = std::make_shared<Session>(*this, std::move(stream), source);
    session->Write(full ? SnppAnswer{Closing("too many sessions"), true}
                        : SnppAnswer{kSnppGreeting});
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
