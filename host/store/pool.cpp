// Connections kept open. Tested by tests/unit/host/pool_test.cpp.
#include "host/store/pool.h"

#include <sys/stat.h>

#include <atomic>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "host/store/database_name.h"
#include "host/store/schema.h"

namespace host {
// Which file it is, whatever its name.
struct FileIdentity {
    dev_t device;
    ino_t number;
};

namespace {

bool operator==(const FileIdentity& left, const FileIdentity& right) {
    return left.device == right.device && left.number == right.number;
}

// A database on a server is what its name says, always.
FileIdentity IdentityOf(const std::string& path) {
    struct stat status {};
    if (IsOnServer(path)) {
        return {};
    }
    // A file that has just gone is found missing when it is opened.
    return stat(path.c_str(), &status) == 0 ? FileIdentity{status.st_dev, status.st_ino}
                                            : FileIdentity{};
}

}  // namespace

class DatabaseFile {
 public:
    explicit DatabaseFile(std::string path)
        : path_(std::move(path)), identity_(IdentityOf(path_)), owners_(path_) {}

    bool Is(const FileIdentity& file) const { return file == identity_; }
    bool IsStillNamed() const { return Is(IdentityOf(path_)); }
    FileNamed Named() const {
        const FileIdentity now = IdentityOf(path_);
        if (Is(now)) {
            return FileNamed::kStill;
        }
        return now == FileIdentity{} ? FileNamed::kGone : FileNamed::kReplaced;
    }
    OwnerLock& Owners() { return owners_; }
    HeldWrites& Held() { return held_; }

    void KeepRefused() { keeps_refused_ = true; }
    void WriteAs(const Tenure& tenure) {
        const std::lock_guard guard(mutex_);
        tenure_ = tenure;
    }

    std::unique_ptr<PooledConnection> Take() {
        std::unique_ptr<PooledConnection> lent = TakeIdle();
        if (lent == nullptr) {
            lent = std::make_unique<PooledConnection>(path_);
            RequireTables(lent->connection);
        }
        if (keeps_refused_) {
            lent->connection.KeepRefused(held_);
        }
        const std::lock_guard guard(mutex_);
        if (tenure_) {
            lent->connection.WriteAs(*tenure_);
        }
        return lent;
    }

    ~DatabaseFile() {
        if (!IsStillNamed()) {
            for (const std::unique_ptr<PooledConnection>& idle : idle_) {
                idle->connection.LeaveLog();
            }
        }
    }
    DatabaseFile(const DatabaseFile&) = delete;
    DatabaseFile& operator=(const DatabaseFile&) = delete;

    void GiveBack(std::unique_ptr<PooledConnection> lent) {
        const std::lock_guard guard(mutex_);
        if (!closed_ && !lent->connection.InTransaction()) {
            idle_.push_back(std::move(lent));
        }
    }

    void Close() {
        const std::lock_guard guard(mutex_);
        closed_ = true;
        idle_.clear();
    }

 private:
    std::unique_ptr<PooledConnection> TakeIdle() {
        const std::lock_guard guard(mutex_);
        if (idle_.empty()) {
            return nullptr;
        }
        std::unique_ptr<PooledConnection> lent = std::move(idle_.back());
        idle_.pop_back();
        return lent;
    }

    const std::string path_;
    const FileIdentity identity_;
    OwnerLock owners_;
    HeldWrites held_;
    std::atomic<bool> keeps_refused_{false};
    std::mutex mutex_;
    bool closed_ = false;                                  // guarded by mutex_
    std::optional<Tenure> tenure_;                         // guarded by mutex_
    std::vector<std::unique_ptr<PooledConnection>> idle_;  // guarded by mutex_
};

namespace {

struct Pool {
    std::mutex mutex;
    // Guarded by mutex. The second is a short way: what a name, as it is given, led to last.
    std::map<std::string, std::shared_ptr<DatabaseFile>> files;
    std::map<std::string, std::shared_ptr<DatabaseFile>> last;
};

Pool& ThePool() {
    // Never destroyed: a thread of the library may still read a table while the process ends.
    static Pool& pool = *std::make_unique<Pool>().release();
    return pool;
}

std::shared_ptr<DatabaseFile> FindFile(const std::string& path) {
    Pool& pool = ThePool();
    const std::lock_guard guard(pool.mutex);
    const FileIdentity identity = IdentityOf(path);
    std::shared_ptr<DatabaseFile>& last = pool.last[path];
    if (last != nullptr && last->Is(identity)) {
        return last;
    }
    // One name for a file, from wherever it is reached: the locks beside it go by the name.
    const std::string name =
        IsOnServer(path) ? path : std::filesystem::weakly_canonical(path).string();
    std::shared_ptr<DatabaseFile>& file = pool.files[name];
    if (file == nullptr || !file->IsStillNamed()) {
        file = std::make_shared<DatabaseFile>(name);
    }
    last = file;
    return file;
}

}  // namespace

Lease::Lease(const std::string& path, Refusals refusals) : file_(FindFile(path)) {
    if (refusals == Refusals::kKept) {
        file_->KeepRefused();
    }
    lent_ = file_->Take();
}

Lease::~Lease() {
    file_->GiveBack(std::move(lent_));
}

OwnerLock& Lease::Owners() {
    return file_->Owners();
}

FileNamed Lease::Named() const {
    return file_->Named();
}

size_t Lease::CountHeld() {
    return file_->Held().Count();
}

void WriteAs(const std::string& path, const Tenure& tenure) {
    FindFile(path)->WriteAs(tenure);
}

void CloseDatabases() {
    Pool& pool = ThePool();
    const std::lock_guard guard(pool.mutex);
    for (auto& [name, file] : pool.files) {
        file->Close();
    }
    pool.files.clear();
    pool.last.clear();
}

}  // namespace host
