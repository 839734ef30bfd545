// The same work with the fewest means: one connection, one prepared statement a kind, the same
// tables, indexes and durability; each change is a commit of its own, as the library's are.
#ifndef PAGERFWD_BENCH_SCALE_REFERENCE_H
#define PAGERFWD_BENCH_SCALE_REFERENCE_H

#include <sqlite3.h>

#include <cstdint>
#include <string>

namespace bench {

// Errors     Throws std::runtime_error.
class ReferenceStore {
 public:
    explicit ReferenceStore(const std::string& database);
    ~ReferenceStore();
    ReferenceStore(const ReferenceStore&) = delete;
    ReferenceStore& operator=(const ReferenceStore&) = delete;

    void StartUp();             // what a start reads and writes for every pending page
    void Pass(int32_t pages);   // what a pass reads
    void Queue(int32_t alarm);  // what one more page reads and writes
    void Acknowledge(int32_t alarm);
    void Fold(int32_t alarm);

 private:
    sqlite3_stmt* Prepare(const char* sql);
    void Run(sqlite3_stmt* statement, const char* value = nullptr);
    void Insert(const char* alarm);

    sqlite3* database_ = nullptr;
    sqlite3_stmt* pending_;
    sqlite3_stmt* alarm_;
    sqlite3_stmt* forwarding_;
    sqlite3_stmt* pager_;
    sqlite3_stmt* event_;
    sqlite3_stmt* insert_;
    sqlite3_stmt* delete_;
    sqlite3_stmt* states_;
    sqlite3_stmt* fold_;
};

}  // namespace bench

#endif
