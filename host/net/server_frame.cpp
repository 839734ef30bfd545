// What servers share. Tested by tests/unit/host/web_server_test.cpp and snpp_server_test.cpp.
#include "host/net/server_frame.h"

#include <csignal>

namespace host {
namespace {

namespace asio = boost::asio;
using Error = boost::system::error_code;

constexpr size_t kWorkers = 2;

}  // namespace

ServerFrame::ServerFrame(std::vector<Descriptor> listeners, size_t most, RateLimit rate,
                         Opener opener)
    : most_(most),
      workers_(kWorkers),
      rate_(std::move(rate)),
      signals_(io_),
      acceptor_(io_, std::move(listeners),
                [opener = std::move(opener)](Protocol::socket socket, const std::string& source) {
                    opener(Stream(std::move(socket)), source);
                }) {}

ServerFrame::~ServerFrame() = default;

void ServerFrame::EndAtSignals() {
    signals_.add(SIGTERM);
    signals_.add(SIGINT);
    signals_.async_wait([this](const Error& error, int) {
        if (!error) {
            End();
        }
    });
}

void ServerFrame::Run() {
    acceptor_.Start();
    io_.run();
    workers_.join();
}

void ServerFrame::Stop() {
    asio::post(io_, [this] { End(); });
}

void ServerFrame::End() {
    ending_ = true;
    signals_.cancel();
    acceptor_.Stop();
    const std::set<ServerSession*> sessions = sessions_;
    for (ServerSession* const session : sessions) {
        if (session->idle_) {
            session->stream_.close();
        }
    }
}

ServerSession::ServerSession(ServerFrame& frame, ServerFrame::Stream stream, std::string source)
    : frame_(frame), stream_(std::move(stream)), source_(std::move(source)) {
    frame_.sessions_.insert(this);
}

ServerSession::~ServerSession() {
    frame_.sessions_.erase(this);
}

}  // namespace host
