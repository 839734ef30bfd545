// Points in time and spans, in seconds.
#ifndef PAGERFWD_LINUX_CTIME_H
#define PAGERFWD_LINUX_CTIME_H

#include <cstdint>
#include <ctime>

#include "linux/XString.h"

// A number of seconds, which may be negative.
class CTimeSpan {
 public:
    explicit CTimeSpan(long seconds) : m_timeSpan(static_cast<int32_t>(seconds)) {}

 private:
    friend class CTime;

    int32_t m_timeSpan;
};

// A point in time: seconds since 1970 UTC, in the platform's time_t (32 bits in the 32-bit build).
//
// Threads    Reading one object from several threads is safe, whatever else in the process converts
//            times, but for the buffer that GetLocalTm(nullptr) hands out: whoever asks for that
//            reads it before anyone else in the process calls localtime.
// Errors     A local time that the C library can't give reads as midnight on a Sunday.
class CTime {
 public:
    // Holds no time until one is assigned.
    CTime() = default;
    explicit CTime(long t) : m_time(t) {}

    // Local time. Days past the end of a month run on into the next (31 February is 3 March). nDST
    // is the daylight-saving flag of mktime: -1 lets it find out. The process aborts with an
    // assertion message when the day isn't 1 to 31, the month isn't 1 to 12, the year is before
    // 1900, or mktime can't convert.
    CTime(int nYear, int nMonth, int nDay, int nHour, int nMin, int nSec, int nDST = -1);

    static CTime GetCurrentTime();

    // The local time, copied to *out; returns out, or null (and *out untouched) on failure. With a
    // null out, returns the C library's own buffer, which the next conversion overwrites.
    tm* GetLocalTm(tm* out) const;

    int GetHour() const;
    int GetMinute() const;
    int GetSecond() const;
    int GetDayOfWeek() const;  // 1 = Sunday ... 7 = Saturday

    // As strftime does it. Empty when the text would not fit into 127 characters.
    CString Format(const char* fmt) const;

    CTime& operator+=(CTimeSpan span);
    bool operator>(const CTime& other) const { return m_time > other.m_time; }
    bool operator<=(const CTime& other) const { return m_time <= other.m_time; }

 private:
    time_t m_time = 0;
};

#endif
