// The engine of this process, with many pages: what a process has that loads the library.
//
// Order      One at a time.
// Threads    One. No worker of its own: it would take the pages up meanwhile.
#ifndef PAGERFWD_BENCH_SCALE_ENGINE_H
#define PAGERFWD_BENCH_SCALE_ENGINE_H

#include <pagerfwd/pagerfwd.h>

#include <cstdint>
#include <string>

namespace bench {

class Engine {
 public:
    // On a database that MakeSite has made.
    Engine(std::string database, int32_t pages);
    ~Engine();
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    void Start();

    bool HasAll() const;
    // Bytes of the heap.
    double BytesOfAPage() const { return bytes_; }
    // Of the process, behind the start.
    double Resident() const { return resident_; }

    bool Queue(int32_t alarm);
    static void PutAllOff();
    static void Fold(int32_t alarm);

 private:
    std::string database_;
    const int32_t pages_;
    double bytes_ = 0;
    double resident_ = 0;
    int32_t alarm_ = 0;
    std::string server_;
    std::string group_;
    std::string pager_;
    char* groups_[1];
    char* pagers_[1];
    FwdSpecialInfoStr info_{};
};

}  // namespace bench

#endif
