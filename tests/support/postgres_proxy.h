// A proxy before a PostgreSQL server, a process of its own, that loses one statement: it counts
// what is asked through it, and at the one that is planned cuts or stalls the connection.
//
// Errors     What can't be had is std::runtime_error.
#ifndef PAGERFWD_TESTS_SUPPORT_POSTGRES_PROXY_H
#define PAGERFWD_TESTS_SUPPORT_POSTGRES_PROXY_H

#include <sys/types.h>

#include <atomic>
#include <filesystem>
#include <string>

namespace test_support {

class PostgresProxy {
 public:
    enum class Fault {
        kNone,
        kCutBefore,  // the server never sees the statement
        kCutBehind,  // the server has done it, and its answer is lost
        kStall,      // nothing comes or goes any more, and nobody closes
    };

    // Before the server whose socket is in this folder; its own is in one of this name within.
    explicit PostgresProxy(const std::filesystem::path& server, const std::string& name = "proxy");
    ~PostgresProxy();
    PostgresProxy(const PostgresProxy&) = delete;
    PostgresProxy& operator=(const PostgresProxy&) = delete;

    const std::filesystem::path& Folder() const { return folder_; }

    // Counts anew, from 1 on. What is asked as one counts as one.
    void Plan(Fault fault, int statement);
    int Statements() const { return plan_->count; }
    bool HasFailed() const { return plan_->failed; }

    // Takes no call any more, and cuts those that there are; takes them again.
    void Refuse(bool refuses);
    // Nothing comes or goes any more, and nobody closes, until it does again.
    void Stall(bool stalls) { plan_->stalls = stalls; }
    // The same as Refuse, from the failure that is planned on.
    void RefuseOnceFailed(bool refuses);

 private:
    // In memory that both processes share.
    struct Plans {
        std::atomic<int> fault{0};
        std::atomic<int> statement{0};
        std::atomic<int> count{0};
        std::atomic<bool> failed{false};
        std::atomic<bool> refuses{false};
        std::atomic<bool> stalls{false};
        std::atomic<bool> refuses_once_failed{false};
    };
    friend class ProxyProcess;

    const std::filesystem::path folder_;
    Plans* const plan_;
    pid_t process_ = -1;
};

}  // namespace test_support

#endif
