// The HTTP server, by Boost.Beast. Tested by
// tests/unit/host/web_server_test.cpp.
#include "host/web/server.h"

#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http.hpp>
#include <optional>
#include <string>
#include <utility>

#include "host/net/server_frame.h"

namespace host {
namespace {

namespace beast = boost::beast;
namespace http = beast::http;
using Error = boost::system::error_code;
using Protocol = ServerFrame::Protocol;
using Stream = ServerFrame::Stream;

constexpr uint32_t kLargestHeader = 8 * 1024;
constexpr uint64_t kLargestBody = 1024 * 1024;
constexpr size_t kLargestRead = 64 * 1024;
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

// What all connections share.
class WebServer::Impl {
 public:
    Impl(std::vector<Descriptor> listeners, WebHandler handler, const WebLimits& limits)
        : handler_(std::move(handler)),
          limits_(limits),
          frame_(std::move(listeners), limits.connections, RateLimit(limits.burst, limits.every),
                 [this](Stream stream, const std::string& source) {
                     Begin(std::move(stream), source);
                 }) {
        frame_.EndAtSignals();
    }

    void Run() { frame_.Run(); }
    void Stop() { frame_.Stop(); }

 private:
    class Session;

    void Begin(Stream stream, const std::string& source);

    const WebHandler handler_;
    const WebLimits limits_;
    ServerFrame frame_;  // ends first: its sessions use the rest
};

// A connection: a request, its answer, the next request.
class WebServer::Impl::Session : public ServerSession {
 public:
    Session(Impl& server, Stream stream, std::string source)
        : ServerSession(server.frame_, std::move(stream), std::move(source)), server_(server) {}

    void Read() {
        parser_.emplace();
        parser_->header_limit(kLargestHeader);
        parser_->body_limit(kLargestBody);
        idle_ = true;
        stream_.expires_after(server_.limits_.header);
        http::async_read_header(stream_, buffer_, *parser_,
                                [self = shared_from_this(), this](const Error& error, size_t) {
                                    idle_ = false;
                                    error ? Fail(error) : ReadBody();
                                });
    }

    // Before anything is read.
    void Refuse(WebAnswer answer) {
        keep_ = false;
        Write(std::move(answer));
    }

 private:
    void ReadBody() {
        if (!frame_.MayAsk(source_)) {
            WebAnswer answer = Refusal(429, "too many requests from this source");
            answer.retry_after = kSoon;
            return Refuse(std::move(answer));
        }
        stream_.expires_after(server_.limits_.body);
        http::async_read(stream_, buffer_, *parser_,
                         [self = shared_from_this(), this](const Error& error, size_t) {
                             error ? Fail(error) : Handle();
                         });
    }

    void Fail(const Error& error) {
        if (std::optional<WebAnswer> refusal = RefusalFor(error)) {
            Refuse(std::move(*refusal));
        }
    }

    void Handle() {
        http::request<http::string_body> request = parser_->release();
        keep_ = request.keep_alive() && !frame_.IsEnding();
        WebRequest asked{std::string(request.method_string()),
                         std::string(request.target()),
                         TokenOf(request),
                         std::move(request.body()),
                         source_,
                         std::string(request[http::field::cookie])};
        Work([this, asked = std::move(asked)] { return server_.handler_(asked); },
             [this](WebAnswer answer) { Write(std::move(answer)); });
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
                          [self = shared_from_this(), this](const Error& error, size_t) {
                              if (!error) {
                                  GoOn();
                              }
                          });
    }

    void GoOn() {
        if (keep_ && !frame_.IsEnding()) {
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
                                [self = shared_from_this(), this](const Error& error, size_t) {
                                    if (!error && ++discarded_ < kMostDiscarded) {
                                        Discard();
                                    }
                                });
    }

    static constexpr int kMostDiscarded = 64;

    Impl& server_;
    beast::flat_buffer buffer_{kLargestRead};
    std::optional<http::request_parser<http::string_body>> parser_;
    http::response<http::string_body> answer_;
    bool keep_ = true;
    int discarded_ = 0;
};

void WebServer::Impl::Begin(Stream stream, const std::string& source) {
    const bool full = frame_.IsFull();
    const auto session = std::make_shared<Session>(*this, std::move(stream), source);
    if (full) {
        WebAnswer answer = Refusal(503, "too many connections");
        answer.retry_after = kSoon;
        session->Refuse(std::move(answer));
    } else {
        session->Read();
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
