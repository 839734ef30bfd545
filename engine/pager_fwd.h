// The facade behind the exported functions, and what they keep for the process.
#ifndef PAGERFWD_ENGINE_PAGER_FWD_H
#define PAGERFWD_ENGINE_PAGER_FWD_H

#include <pagerfwd/pagerfwd.h>

#include <cstdint>
#include <mutex>

class CPagerFwd;
class CPagerHdl;

// Made by the first call of an exported function that needs them. All start null.
extern CPagerFwd* pagerFwd;
extern CPagerHdl* pagerHdl;
extern char* m_dB;  // the database name, owned: a heap copy, freed with array delete

// Guards the three, for one look or one change: no line is traced, no table read and no thread
// waited for under it.
extern std::mutex engineLock;

// Held by whoever makes the engine or takes it down, from beginning to end, and before engineLock.
// A call that finds the engine up doesn't take it.
extern std::mutex engineChange;

// What AlarmFwdPager answers.
enum ForwardResult : int32_t {
    kQueued = 1,
    kNotQueued = 0,
    kNoPagerFound = -1,
};

// Order      Made before the handler: construction forgets a handler that was there. Destruction
//            takes the handler down, which can take as long as a page.
// Threads    Construction and destruction require engineChange; the two methods take it if need be.
// Errors     std::bad_alloc from the construction of it and of a handler, and where the name of the
//            database can't be copied. Otherwise a page that memory runs out for is not queued, or
//            fails.
class CPagerFwd {
 public:
    explicit CPagerFwd(const char* dbName);
    ~CPagerFwd();
    CPagerFwd(const CPagerFwd&) = delete;
    CPagerFwd& operator=(const CPagerFwd&) = delete;

    // As the exported functions of these names.
    int32_t AlarmFwdPager(FwdSpecialInfoStr* info, const char* serverName, const char* extra,
                          char** pagerNames, int32_t pagerCount);
    int32_t TestPager(FwdSpecialInfoStr* info, const char* description, const char* pagerNumber,
                      const char* comPort, const char* pagerType, const char* timeModel);
};

// Has the engine up, if it can come up: as CPagerHdl::ComeUp, which every call so tries again. A
// worker that the system refused before is asked for once more. Returns whether the handler had to
// be made.
bool EnsureHandler(const char* dbName);

#endif
