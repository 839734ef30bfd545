// The HTTP server: connections, limits, and a handler that answers.
//
//   limit            what happens beyond
//   8 KiB of header  431
//   1 MiB of body    413
//   requests         429, by source
//   connections      503
//   time             30 s for a header, also of a connection that waits for its next request; 10 s
//                    for a body, or to take an answer: then it is closed
//
// Threads    Run serves in the calling thread, and has a few of its own for the handler, which may
//            wait for the database: nobody else's bytes wait for that.
// Ownership  The listeners are closed when the server ends.
// Errors     None leave Run. What a client does wrong ends its connection.
#ifndef PAGERFWD_HOST_WEB_SERVER_H
#define PAGERFWD_HOST_WEB_SERVER_H

#include <chrono>
#include <cstddef>
#include <memory>
#include <vector>

#include "host/files/descriptor.h"
#include "host/web/http.h"

namespace host {

struct WebLimits {
    size_t connections = 256;
    std::chrono::milliseconds header{30000};
    std::chrono::milliseconds body{10000};
    int burst = 400;                     // requests of a source at once
    std::chrono::milliseconds every{5};  // ... and then one more each
};

class WebServer {
 public:
    // listeners: sockets that listen already.
    WebServer(std::vector<Descriptor> listeners, WebHandler handler, const WebLimits& limits);
    ~WebServer();
    WebServer(const WebServer&) = delete;
    WebServer& operator=(const WebServer&) = delete;

    // Until SIGTERM or SIGINT, or Stop. Requests that have come whole are answered first.
    void Run();
    // From any thread.
    void Stop();

 private:
    class Impl;
    const std::unique_ptr<Impl> impl_;
};

}  // namespace host

#endif
