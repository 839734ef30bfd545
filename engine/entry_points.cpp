// The functions that a service calls, but for NXIsInTimeModel, which stands with the time models.
// Tested by tests/engine/entry_points_test.cpp.
#include <mutex>
#include <new>
#include <utility>

#include "engine/pager_fwd.h"
#include "engine/pager_hdl.h"

#define PAGERFWD_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

using EngineGuard = std::lock_guard<std::mutex>;

CPagerFwd* FacadeThatIs() {
    const EngineGuard guard(engineLock);
    return pagerFwd;
}

// Returns the one before.
CPagerFwd* SetFacade(CPagerFwd* facade) {
    const EngineGuard guard(engineLock);
    return std::exchange(pagerFwd, facade);
}

// A constructor that throws leaves the facade null.
CPagerFwd* Facade(const FwdSpecialInfoStr& info) {
    if (CPagerFwd* const facade = FacadeThatIs()) {
        return facade;
    }
    const EngineGuard change(engineChange);
    if (FacadeThatIs() == nullptr) {
        SetFacade(new CPagerFwd(info.dbName));
    }
    return FacadeThatIs();
}

// The answer of a call, or the one for a call that memory ran out in. Only an engine that doesn't
// come up for want of memory is told by the exception: the service could take no answer for it.
template <typename Call>
int32_t AnswerOf(Call call, int32_t ifNoMemory) {
    try {
        return call();
    } catch (const std::bad_alloc&) {
        if (!CPagerHdl::IsRunning()) {
            throw;
        }
        return ifNoMemory;
    }
}

}  // namespace

PAGERFWD_EXPORT int32_t AlarmFwdPager(FwdSpecialInfoStr* info, char* serverName, char* extra,
                                      char** pagerNames, int32_t pagerCount) {
    const auto call = [&] {
        return Facade(*info)->AlarmFwdPager(info, serverName, extra, pagerNames, pagerCount);
    };
    return AnswerOf(call, kNotQueued);
}

PAGERFWD_EXPORT void StartAlarmFwdPager(FwdSpecialInfoStr* info) {
    Facade(*info);
    EnsureHandler(info->dbName);
}

PAGERFWD_EXPORT void StopAlarmFwdPager(void) {
    const EngineGuard change(engineChange);
    delete SetFacade(nullptr);
}

PAGERFWD_EXPORT int32_t TestPager(FwdSpecialInfoStr* info, char* description, char* pagerNumber,
                                  char* comPort, char* pagerType, char* timeModel) {
    const auto call = [&] {
        return Facade(*info)->TestPager(info, description, pagerNumber, comPort, pagerType,
                                        timeModel);
    };
    return AnswerOf(call, kNoPort);
}
