#include "bench/scale_engine.h"

#include <malloc.h>

#include <fstream>
#include <utility>

#include "bench/scale_site.h"
#include "engine/pager_hdl.h"
#include "host/store/pool.h"

namespace bench {
namespace {

size_t BytesInUse() {
    const auto info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

double ResidentBytes() {
    constexpr double kPage = 4096;
    std::ifstream file("/proc/self/statm");
    double all = 0;
    double resident = 0;
    file >> all >> resident;
    return resident * kPage;
}

}  // namespace

Engine::Engine(std::string database, int32_t pages)
    : database_(std::move(database)),
      pages_(pages),
      server_(kServer),
      group_(kGroup),
      pager_(kPager),
      groups_{group_.data()},
      pagers_{pager_.data()} {
    info_.dbName = database_.data();
    info_.alarmLogId = &alarm_;
    info_.alarmGroups = groups_;
    CPagerHdl::checkAlready = true;  // no worker yet
}

Engine::~Engine() {
    StopAlarmFwdPager();
    host::CloseDatabases();
}

void Engine::Start() {
    malloc_trim(0);
    const size_t before = BytesInUse();
    StartAlarmFwdPager(&info_);
    bytes_ = static_cast<double>(BytesInUse() - before) / pages_;
    resident_ = ResidentBytes();
}

bool Engine::HasAll() const {
    return m_pPagingQ != nullptr && m_pPagingQ->GetCount() == pages_;
}

bool Engine::Queue(int32_t alarm) {
    alarm_ = alarm;
    return AlarmFwdPager(&info_, server_.data(), nullptr, pagers_, 1) == 1;
}

void Engine::PutAllOff() {
    for (POSITION next = m_pPagingQ->GetHeadPosition(); next != nullptr;) {
        static_cast<ForwardQEntry*>(m_pPagingQ->GetNext(next))->queueTime += CTimeSpan(86400);
    }
}

void Engine::Fold(int32_t alarm) {
    CPagerHdl::m_pPagerEventsSet->UpdateAlarmLog(alarm);
}

}  // namespace bench
