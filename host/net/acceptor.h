// Who comes to a server: connections, taken from sockets that listen. Only servers include this,
// since it includes Boost.
//
// Threads    The one that runs the io_context, for all that is here.
// Ownership  The listeners are closed with the object.
#ifndef PAGERFWD_HOST_NET_ACCEPTOR_H
#define PAGERFWD_HOST_NET_ACCEPTOR_H

#include <sys/socket.h>

#include <boost/asio/generic/stream_protocol.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>
#include <boost/asio/steady_timer.hpp>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "host/files/descriptor.h"

namespace host {

class Acceptor {
 public:
    using Protocol = boost::asio::generic::stream_protocol;
    // source: an address, or "unix".
    using Taker = std::function<void(Protocol::socket socket, const std::string& source)>;

    Acceptor(boost::asio::io_context& io, std::vector<Descriptor> listeners, Taker taker);

    void Start();
    void Stop();

 private:
    struct Listener {
        Listener(boost::asio::io_context& io, Descriptor descriptor)
            : socket(std::move(descriptor)), readable(io, socket.Number()), again(io) {}
        ~Listener() { readable.release(); }
        Listener(const Listener&) = delete;
        Listener& operator=(const Listener&) = delete;

        const Descriptor socket;
        boost::asio::posix::stream_descriptor readable;
        boost::asio::steady_timer again;
    };

    void Await(Listener& listener);
    void Accept(Listener& listener);
    void Take(int accepted, const sockaddr_storage& address);

    boost::asio::io_context& io_;
    const Taker taker_;
    std::vector<std::unique_ptr<Listener>> listeners_;
};

}  // namespace host

#endif
