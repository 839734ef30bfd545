// What every server of this process is: who comes, who is there, the threads, and how it ends. Only
// servers include this, since it includes Boost.
//
// Threads    Run serves in the calling thread: all bytes, limits and sessions. Answers are made
//            by a few threads of the frame's own, which may wait for the database: nobody else's
//            bytes wait for that.
// Ownership  The listeners are closed with the frame. A session is held by the operation that it
//            waits for, and by what makes its answer; when neither is left, it closes. None
//            outlives the frame.
// Errors     None leave Run. What a client does wrong ends its session.
#ifndef PAGERFWD_HOST_NET_SERVER_FRAME_H
#define PAGERFWD_HOST_NET_SERVER_FRAME_H

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/signal_set.hpp>
#include <boost/asio/thread_pool.hpp>
#include <boost/beast/core/basic_stream.hpp>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/files/descriptor.h"
#include "host/net/acceptor.h"
#include "host/net/rate.h"

namespace host {

class ServerSession;

class ServerFrame {
 public:
    using Protocol = Acceptor::Protocol;
    using Stream = boost::beast::basic_stream<Protocol>;
    // Begins a session with who has come.
    using Opener = std::function<void(Stream stream, const std::string& source)>;

    // most: sessions at once; rate: of what each source may ask.
    ServerFrame(std::vector<Descriptor> listeners, size_t most, RateLimit rate, Opener opener);
    ~ServerFrame();
    ServerFrame(const ServerFrame&) = delete;
    ServerFrame& operator=(const ServerFrame&) = delete;

    // SIGTERM and SIGINT end it too. To be said before Run.
    void EndAtSignals();
    // Until Stop. What has been asked for is answered first; idle sessions end.
    void Run();
    // From any thread.
    void Stop();

    // For the sessions, and who opens them: in the thread that runs.
    bool IsFull() const { return sessions_.size() >= most_; }
    bool IsEnding() const { return ending_; }
    bool MayAsk(const std::string& source) { return rate_.Take(source, RateLimit::Clock::now()); }

 private:
    friend class ServerSession;

    void End();

    const size_t most_;
    std::set<ServerSession*> sessions_;  // outlives what io_ still holds of them
    boost::asio::io_context io_{1};
    boost::asio::thread_pool workers_;
    RateLimit rate_;  // by the thread that runs, as all that follows
    boost::asio::signal_set signals_;
    Acceptor acceptor_;
    bool ending_ = false;
};

// A connection, and what goes on over it: of each server a class of its own.
class ServerSession : public std::enable_shared_from_this<ServerSession> {
 public:
    ServerSession(const ServerSession&) = delete;
    ServerSession& operator=(const ServerSession&) = delete;

 protected:
    ServerSession(ServerFrame& frame, ServerFrame::Stream stream, std::string source);
    virtual ~ServerSession();

    // Calls then(make()): make in a thread that may wait, however long; then in the one that runs.
    template <class Make, class Then>
    void Work(Make make, Then then);

    ServerFrame& frame_;
    ServerFrame::Stream stream_;
    const std::string source_;
    bool idle_ = false;  // nothing has been asked for: such a session ends with the server

 private:
    friend class ServerFrame;
};

template <class Make, class Then>
void ServerSession::Work(Make make, Then then) {
    stream_.expires_never();
    boost::asio::post(
        frame_.workers_, [self = shared_from_this(), make = std::move(make), then = std::move(then),
                          work = boost::asio::make_work_guard(frame_.io_)]() mutable {
            auto made = make();
            boost::asio::io_context& io = self->frame_.io_;
            // Moved, so that the session ends in the thread that knows all of them.
            boost::asio::post(io, [self = std::move(self), then = std::move(then),
                                   made = std::move(made)]() mutable { then(std::move(made)); });
        });
}

}  // namespace host

#endif
