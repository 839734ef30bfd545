// The HTTP server, by Boost.Beast. Tested by
// tests/unit/host/web_server_test.cpp.
#include "host/web/server.h"

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/signal_set.hpp>
#include <boost/asio/thread_pool.hpp>
#include <boost/beast/core/basic_stream.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http.hpp>
#include <csignal>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "host/net/acceptor.h"
#include "host/net/rate.h"

namespace host {
namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
using Error = boost::system::error_code;
using Protocol = Acceptor::Protocol;
using Stream = beast::basic_stream<Protocol>;

constexpr uint32_t kLargestHeader = 8 * 1024;
constexpr uint64_t kLargestBody = 1024 * 1024;
constexpr size_t kLargestRead = 64 * 1024;
constexpr size_t kHandlers = 2;
constexpr std::chrono::seconds kLinger{2};
constexpr int kSoon = 1;  // seconds

WebAnswer Refusal(int status, const char* why) {
    return {status, std::string("{\"error\": \"") + why + "\"}"};
}

// What is answered to bytes that are no request, or too many; none: nothing can be.
std::optional<WebAnswer> RefusalFor(const Error& error) {
    if (error == http::error::header_limit) {
        return Refusal(431, "the header is longer than 8 KiB");
    }
    if (error == http::error::body_limit) {
        return Refusal(413, "the body is longer than 1 MiB");
    }
    const bool is_ours =
        error.category() == http::make_error_code(http::error::bad_value).category();
    if (!is_ours || error == http::error::end_of_stream || error == http::error::partial_message) {
        return std::nullopt;
    }
    return Refusal(400, "this is no HTTP request");
}

std::string TokenOf(const http::request<http::string_body>& request) {
    const beast::string_view field = request[http::field::authorization];
    constexpr const char* kScheme = "Bearer ";
    constexpr size_t kLength = 7;
    return beast::iequals(field.substr(0, std::min(field.size(), kLength)), kScheme)
               ? std::string(field.substr(kLength))
               : std::string();
}

}  // namespace

class WebServer::Impl {
 public:
    Impl(std::vector<Descriptor> listeners, WebHandler handler, const WebLimits& limits)
        : handler_(std::move(handler)),
          limits_(limits),
          rate_(limits.burst, limits.every),
          signals_(io_, SIGTERM, SIGINT),
          acceptor_(io_, std::move(listeners),
                    [this](Protocol::socket socket, const std::string& source) {
                        Begin(std::move(socket), source);
                    }) {}

    void Run() {
        signals_.async_wait([this](const Error& error, int) {
            if (!error) {
                End();
            }
        });
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

    void End() {
        ending_ = true;
        signals_.cancel();
        acceptor_.Stop();
        EndIdle();
    }
    void EndIdle();

    const WebHandler handler_;
    const WebLimits limits_;
    std::set<Session*> sessions_;  // outlives what io_ still holds of them
    asio::io_context io_{1};
    asio::thread_pool handlers_{kHandlers};
    RateLimit rate_;  // by the thread that runs, as all that follows
    asio::signal_set signals_;
    Acceptor acceptor_;
    bool ending_ = false;
};

// A connection: a request, its answer, the next request.
class WebServer::Impl::Session : public std::enable_shared_from_this<Session> {
 public:
    Session(Impl& server, Stream stream, std::string source)
        : server_(server), stream_(std::move(stream)), source_(std::move(source)) {
        server_.sessions_.insert(this);
    }
    ~Session() { server_.sessions_.erase(this); }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    void Read() {
        parser_.emplace();
        parser_->header_limit(kLargestHeader);
        parser_->body_limit(kLargestBody);
        idle_ = true;
        stream_.expires_after(server_.limits_.header);
        http::async_read_header(stream_, buffer_, *parser_,
                                [self = shared_from_this()](const Error& error, size_t) {
                                    self->idle_ = false;
                                    error ? self->Fail(error) : self->ReadBody();
                                });
    }

    // Before anything is read.
    void Refuse(WebAnswer answer) {
        keep_ = false;
        Write(std::move(answer));
    }

    void EndIfIdle() {
        if (idle_) {
            stream_.close();
        }
    }

 private:
    void ReadBody() {
        if (!server_.rate_.Take(source_, RateLimit::Clock::now())) {
            WebAnswer answer = Refusal(429, "too many requests from this source");
            answer.retry_after = kSoon;
            return Refuse(std::move(answer));
        }
        stream_.expires_after(server_.limits_.body);
        http::async_read(stream_, buffer_, *parser_,
                         [self = shared_from_this()](const Error& error, size_t) {
                             error ? self->Fail(error) : self->Handle();
                         });
    }

    void Fail(const Error& error) {
        if (std::optional<WebAnswer> refusal = RefusalFor(error)) {
            Refuse(std::move(*refusal));
        }
    }

    void Handle() {
        stream_.expires_never();
        http::request<http::string_body> request = parser_->release();
        keep_ = request.keep_alive() && !server_.ending_;
        WebRequest asked{std::string(request.method_string()),
                         std::string(request.target()),
                         TokenOf(request),
                         std::move(request.body()),
                         source_,
                         std::string(request[http::field::cookie])};
        asio::post(server_.handlers_, [self = shared_from_this(), asked = std::move(asked),
                                       work = asio::make_work_guard(server_.io_)]() mutable {
            WebAnswer answer = self->server_.handler_(asked);
            asio::io_context& io = self->server_.io_;
            // Moved, so that the session ends in the thread that knows all of them.
            asio::post(io, [self = std::move(self), answer = std::move(answer)]() mutable {
                self->Write(std::move(answer));
            });
        });
    }

    void Write(WebAnswer answer) {
        answer_ = {};
        answer_.result(static_cast<unsigned>(answer.status));
        answer_.set(http::field::content_type, answer.type);
        answer_.set(http::field::cache_control, "no-store");
        answer_.set("X-Content-Type-Options", "nosniff");
        answer_.set("Content-Security-Policy", answer.policy);
        answer_.set("Referrer-Policy", "no-referrer");
        if (!answer.location.empty()) {
            answer_.set(http::field::location, answer.location);
        }
        if (!answer.cookie.empty()) {
            answer_.set(http::field::set_cookie, answer.cookie);
        }
        if (answer.retry_after > 0) {
            answer_.set(http::field::retry_after, std::to_string(answer.retry_after));
        }
        if (answer.status == 401) {
            answer_.set(http::field::www_authenticate, "Bearer");
        }
        answer_.body() = std::move(answer.body);
        answer_.keep_alive(keep_);
        answer_.prepare_payload();
        stream_.expires_after(server_.limits_.body);
        http::async_write(stream_, answer_,
                          [self = shared_from_this()](const Error& error, size_t) {
                              if (!error) {
                                  self->GoOn();
                              }
                          });
    }

    void GoOn() {
        if (keep_ && !server_.ending_) {
            Read();
        } else {
            Linger();
        }
    }

    // What the client still sends is read: to close upon it would take the answer away from him.
    void Linger() {
        Error ignored;
        stream_.socket().shutdown(Protocol::socket::shutdown_send, ignored);
        stream_.expires_after(kLinger);
        Discard();
    }
    void Discard() {
        buffer_.clear();
        stream_.async_read_some(buffer_.prepare(kLargestRead),
                                [self = shared_from_this()](const Error& error, size_t) {
                                    if (!error && ++self->discarded_ < kMostDiscarded) {
                                        self->Discard();
                                    }
                                });
    }

    static constexpr int kMostDiscarded = 64;

    Impl& server_;
    Stream stream_;
    const std::string source_;
    beast::flat_buffer buffer_{kLargestRead};
    std::optional<http::request_parser<http::string_body>> parser_;
    http::response<http::string_body> answer_;
    bool keep_ = true;
    bool idle_ = false;
    int discarded_ = 0;
};

void WebServer::Impl::Begin(Protocol::socket socket, const std::string& source) {
    const bool full = sessions_.size() >= limits_.connections;
    const auto session = std::make_shared<Session>(*this, Stream(std::move(socket)), source);
    if (full) {
        WebAnswer answer = Refusal(503, "too many connections");
        answer.retry_after = kSoon;
        session->Refuse(std::move(answer));
    } else {
        session->Read();
    }
}

void WebServer::Impl::EndIdle() {
    const std::set<Session*> sessions = sessions_;
    for (Session* const session : sessions) {
        session->EndIfIdle();
    }
}

WebServer::WebServer(std::vector<Descriptor> listeners, WebHandler handler, const WebLimits& limits)
    : impl_(std::make_unique<Impl>(std::move(listeners), std::move(handler), limits)) {}

WebServer::~WebServer() = default;

void WebServer::Run() {
    impl_->Run();
}

void WebServer::Stop() {
    impl_->Stop();
}

}  // namespace host
