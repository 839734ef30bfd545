// The SNPP server: connections, limits, and a dialogue for each.
//
//   limit                what happens beyond
//   8 KiB of a line      421, and the session ends
//   lines                421, by source
//   sessions             421
//   time                 a minute for a line, or to take an answer; ten minutes in all: then it is
//                        closed
//
// Threads    Run serves in the calling thread, and has a few of its own for dialogues, which may
//            wait for the database.
// Ownership  The listeners are closed when the server ends.
// Errors     None leave Run.
#ifndef PAGERFWD_HOST_SNPP_SERVER_H
#define PAGERFWD_HOST_SNPP_SERVER_H

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "host/files/descriptor.h"
#include "host/snpp/dialogue.h"

namespace host {

struct SnppLimits {
    size_t sessions = 64;
    std::chrono::milliseconds line{60000};
    std::chrono::milliseconds session{600000};
    int burst = 200;                      // lines of a source at once
    std::chrono::milliseconds every{20};  // ... and then one more each
};

class SnppServer {
 public:
    using Greeter = std::function<SnppDialogue(const std::string& source)>;

    // listeners: sockets that listen already.
    SnppServer(std::vector<Descriptor> listeners, Greeter greeter, const SnppLimits& limits);
    ~SnppServer();
    SnppServer(const SnppServer&) = delete;
    SnppServer& operator=(const SnppServer&) = delete;

    // Until Stop. What has been asked for is answered first.
    void Run();
    // From any thread.
    void Stop();

 private:
    class Impl;
    const std::unique_ptr<Impl> impl_;
};

}  // namespace host

#endif
