// Accepting. Tested by tests/unit/host/web_server_test.cpp and snpp_server_test.cpp.
#include "host/net/acceptor.h"

#include <netinet/in.h>

#include <algorithm>
#include <boost/asio/ip/address.hpp>
#include <utility>

namespace host {
namespace {

namespace asio = boost::asio;
using Error = boost::system::error_code;

constexpr std::chrono::milliseconds kWhenFull{100};

// Whose fault it would be.
std::string SourceOf(const sockaddr_storage& address) {
    if (address.ss_family == AF_INET) {
        const auto& in = reinterpret_cast<const sockaddr_in&>(address);
        return asio::ip::address_v4(ntohl(in.sin_addr.s_addr)).to_string();
    }
    if (address.ss_family == AF_INET6) {
        const auto& in = reinterpret_cast<const sockaddr_in6&>(address);
        asio::ip::address_v6::bytes_type bytes;
        std::copy(std::begin(in.sin6_addr.s6_addr), std::end(in.sin6_addr.s6_addr), bytes.begin());
        return asio::ip::address_v6(bytes).to_string();
    }
    return "unix";
}

}  // namespace

Acceptor::Acceptor(asio::io_context& io, std::vector<Descriptor> listeners, Taker taker)
    : io_(io), taker_(std::move(taker)) {
    for (Descriptor& listener : listeners) {
        listeners_.push_back(std::make_unique<Listener>(io_, std::move(listener)));
    }
}

void Acceptor::Start() {
    for (const auto& listener : listeners_) {
        Await(*listener);
    }
}

void Acceptor::Stop() {
    for (const auto& listener : listeners_) {
        listener->readable.cancel();
        listener->again.cancel();
    }
}

void Acceptor::Await(Listener& listener) {
    listener.readable.async_wait(asio::posix::stream_descriptor::wait_read,
                                 [this, &listener](const Error& error) {
                                     if (!error) {
                                         Accept(listener);
                                     }
                                 });
}

// What has no descriptor waits a little in the system's own queue.
void Acceptor::Accept(Listener& listener) {
    sockaddr_storage address{};
    socklen_t size = sizeof address;
    const int accepted = accept4(listener.socket.Number(), reinterpret_cast<sockaddr*>(&address),
                                 &size, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (accepted >= 0) {
        Take(accepted, address);
        return Await(listener);
    }
    listener.again.expires_after(kWhenFull);
    listener.again.async_wait([this, &listener](const Error& error) {
        if (!error) {
            Await(listener);
        }
    });
}

void Acceptor::Take(int accepted, const sockaddr_storage& address) {
    Protocol::socket socket(io_);
    Error error;
    socket.assign(Protocol(address.ss_family, 0), accepted, error);
    if (error) {
        const Descriptor closed(accepted);
        return;
    }
    taker_(std::move(socket), SourceOf(address));
}

}  // namespace host
