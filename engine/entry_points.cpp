// The functions that a service calls, but for NXIsInTimeModel, which stands with the time models.
// Tested by tests/engine/entry_points_test.cpp.
#include <mutex>

#include "engine/pager_fwd.h"
#include "engine/pager_hdl.h"

#define PAGERFWD_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

using EngineGuard = std::lock_guard<std::mutex>;

// Requires: engineLock held. A constructor that throws leaves the facade null.
CPagerFwd* EnsureFacade(const FwdSpecialInfoStr& info) {
    if (pagerFwd == nullptr) {
        pagerFwd = new CPagerFwd(info.dbName);
    }
    return pagerFwd;
}

CPagerFwd* Facade(const FwdSpecialInfoStr& info) {
    const EngineGuard guard(engineLock);
    return EnsureFacade(info);
}

}  // namespace

PAGERFWD_EXPORT int32_t AlarmFwdPager(FwdSpecialInfoStr* info, char* serverName, char* extra,
                                      char** pagerNames, int32_t pagerCount) {
    return Facade(*info)->AlarmFwdPager(info, serverName, extra, pagerNames, pagerCount);
}

PAGERFWD_EXPORT void StartAlarmFwdPager(FwdSpecialInfoStr* info) {
    const EngineGuard guard(engineLock);
    EnsureFacade(*info);
    if (pagerHdl == nullptr) {
        pagerHdl = new CPagerHdl(info->dbName);
    }
}

PAGERFWD_EXPORT void StopAlarmFwdPager(void) {
    const EngineGuard guard(engineLock);
    delete pagerFwd;
    pagerFwd = nullptr;
}

PAGERFWD_EXPORT int32_t TestPager(FwdSpecialInfoStr* info, char* description, char* pagerNumber,
                                  char* comPort, char* pagerType, char* timeModel) {
    return Facade(*info)->TestPager(info, description, pagerNumber, comPort, pagerType, timeModel);
}
