// Shows on a terminal that something takes time: "... 12 s", in place, from the second second on.
// Elsewhere it does nothing.
//
// Threads    One of its own, while it lives.
#ifndef PAGERFWD_HOST_CLI_ELAPSED_H
#define PAGERFWD_HOST_CLI_ELAPSED_H

#include <condition_variable>
#include <mutex>
#include <thread>

namespace host {

class Elapsed {
 public:
    Elapsed();
    ~Elapsed();
    Elapsed(const Elapsed&) = delete;
    Elapsed& operator=(const Elapsed&) = delete;

 private:
    void Show();

    std::mutex mutex_;
    std::condition_variable ended_changed_;
    bool ended_ = false;  // guarded by mutex_
    std::thread thread_;
};

}  // namespace host

#endif
