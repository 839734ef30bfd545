// Connections kept open. Tested by tests/unit/host/pool_test.cpp.
#include "host/store/pool.h"

#include <sys/stat.h>

#include <filesystem>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

#include "host/store/schema.h"

namespace host {
namespace {

// Which file it is, whatever its name.
struct FileIdentity {
    dev_t device;
    ino_t number;
};

bool operator==(const FileIdentity& left, const FileIdentity& right) {
    return left.device == right.device && left.number == right.number;
}

FileIdentity IdentityOf(const std::string& path) {
    struct stat status {};
    // A file that has just gone is found missing when it is opened.
    return stat(path.c_str(), &status) == 0 ? FileIdentity{status.st_dev, status.st_ino}
                                            : FileIdentity{};
}

}  // namespace

class DatabaseFile {
 public:
    explicit DatabaseFile(std::string path)
        : path_(std::move(path)), identity_(IdentityOf(path_)), owners_(path_) {}

    bool IsStillNamed() const { return IdentityOf(path_) == identity_; }
    OwnerLock& Owners() { return owners_; }

    std::unique_ptr<Connection> Take() {
        {
            const std::lock_guard guard(mutex_);
            if (!idle_.empty()) {
                std::unique_ptr<Connection> connection = std::move(idle_.back());
                idle_.pop_back();
                return connection;
            }
        }
        auto connection = std::make_unique<Connection>(path_);
        RequireTables(*connection);
        return connection;
    }

    void GiveBack(std::unique_ptr<Connection> connection) {
        const std::lock_guard guard(mutex_);
        if (!closed_ && !connection->InTransaction()) {
            idle_.push_back(std::move(connection));
        }
    }

    void Close() {
        const std::lock_guard guard(mutex_);
        closed_ = true;
        idle_.clear();
    }

 private:
    const std::string path_;
    const FileIdentity identity_;
    OwnerLock owners_;
    std::mutex mutex_;
    bool closed_ = false;                            // guarded by mutex_
    std::vector<std::unique_ptr<Connection>> idle_;  // guarded by mutex_
};

namespace {

struct Pool {
    std::mutex mutex;
    std::map<std::string, std::shared_ptr<DatabaseFile>> files;  // guarded by mutex
};

Pool& ThePool() {
    // Never destroyed: a thread of the library may still read a table while the process ends.
    static Pool& pool = *std::make_unique<Pool>().release();
    return pool;
}

std::shared_ptr<DatabaseFile> FindFile(const std::string& path) {
    // One name for a file, from wherever it is reached: the locks beside it go by the name.
    const std::string name = std::filesystem::weakly_canonical(path).string();
    Pool& pool = ThePool();
    const std::lock_guard guard(pool.mutex);
    std::shared_ptr<DatabaseFile>& file = pool.files[name];
    if (file == nullptr || !file->IsStillNamed()) {
        file = std::make_shared<DatabaseFile>(name);
    }
    return file;
}

}  // namespace

Lease::Lease(const std::string& path) : file_(FindFile(path)), connection_(file_->Take()) {}

Lease::~Lease() {
    file_->GiveBack(std::move(connection_));
}

OwnerLock& Lease::Owners() {
    return file_->Owners();
}

void CloseDatabases() {
    Pool& pool = ThePool();
    const std::lock_guard guard(pool.mutex);
    for (auto& [name, file] : pool.files) {
        file->Close();
    }
    pool.files.clear();
}

}  // namespace host
