// A server of ours at a socket of the working folder, in a thread of its own, until the object
// ends.
#ifndef PAGERFWD_TESTS_SUPPORT_SERVING_H
#define PAGERFWD_TESTS_SUPPORT_SERVING_H

#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "host/files/descriptor.h"
#include "host/net/listen.h"

namespace test_support {

constexpr const char* kServedAt = "served.sock";

template <class Server>
class Serving {
 public:
    template <class Handler, class Limits>
    Serving(Handler handler, const Limits& limits)
        : server_(Listeners(), std::move(handler), limits), thread_([this] { server_.Run(); }) {}
    ~Serving() {
        server_.Stop();
        thread_.join();
    }
    Serving(const Serving&) = delete;
    Serving& operator=(const Serving&) = delete;

 private:
    static std::vector<host::Descriptor> Listeners() {
        std::vector<host::Descriptor> listeners;
        listeners.push_back(host::Listen(std::string("unix:") + kServedAt));
        return listeners;
    }

    Server server_;
    std::thread thread_;
};

}  // namespace test_support

#endif
