// Points in time. Tested by tests/unit/linux/time_test.cpp.
#include "linux/CTime.h"

#include <type_traits>

#include "linux/xassert.h"

#define TIME_ASSERT(cond) \
    XASSERT_IN("./CTime", "CTime::CTime(int, int, int, int, int, int, int = -1)", cond)

CTime::CTime(int nYear, int nMonth, int nDay, int nHour, int nMin, int nSec, int nDST) {
    TIME_ASSERT(nDay >= 1 && nDay <= 31);
    TIME_ASSERT(nMonth >= 1 && nMonth <= 12);
    TIME_ASSERT(nYear >= 1900);
    tm local{};
    local.tm_sec = nSec;
    local.tm_min = nMin;
    local.tm_hour = nHour;
    local.tm_mday = nDay;
    local.tm_mon = nMonth - 1;
    local.tm_year = nYear - 1900;
    local.tm_isdst = nDST;
    m_time = mktime(&local);
    TIME_ASSERT(m_time != -1);
}

CTime CTime::GetCurrentTime() {
    return CTime(time(nullptr));
}

tm* CTime::GetLocalTm(tm* out) const {
    if (out == nullptr) {
        return localtime(&m_time);
    }
    tzset();  // localtime looks whether the time zone has changed; localtime_r leaves that to us
    tm local{};
    if (localtime_r(&m_time, &local) == nullptr) {
        return nullptr;
    }
    *out = local;
    return out;
}

// The fields go by way of a copy: localtime's own buffer is any thread's of the process.

int CTime::GetHour() const {
    tm local{};
    GetLocalTm(&local);
    return local.tm_hour;
}

int CTime::GetMinute() const {
    tm local{};
    GetLocalTm(&local);
    return local.tm_min;
}

int CTime::GetSecond() const {
    tm local{};
    GetLocalTm(&local);
    return local.tm_sec;
}

int CTime::GetDayOfWeek() const {
    tm local{};
    GetLocalTm(&local);
    return local.tm_wday + 1;
}

CString CTime::Format(const char* fmt) const {
    tm local{};
    char text[128];
    if (GetLocalTm(&local) == nullptr || strftime(text, sizeof text, fmt, &local) == 0) {
        return CString();
    }
    return CString(text);
}

// Past the last second that the type holds, time goes on at the first.
CTime& CTime::operator+=(CTimeSpan span) {
    using Seconds = std::make_unsigned_t<time_t>;
    m_time = static_cast<time_t>(static_cast<Seconds>(m_time) +
                                 static_cast<Seconds>(static_cast<time_t>(span.m_timeSpan)));
    return *this;
}
