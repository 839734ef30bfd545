// A process that serves one line, in small: the library sees one port, and
// pages are handed over one by one. What it does:
//     A  is handed over to be repeated, and goes on the line;
//     B  is handed over while A is on the line;
//     C  is handed over 5 s after B has ended, while the worker pauses.
// Usage: line_process LIBRARY DATABASE DEVICE|- ring|-
#include <unistd.h>

#include <string>

#include "host/alarms/alarms.h"
#include "host/library/library.h"
#include "host/platform/bell.h"
#include "host/platform/own_device.h"
#include "host/store/connection.h"

namespace {

class Line {
 public:
    Line(const char* library, char* database, bool rings)
        : library_(library), database_(database), rings_(rings) {
        FwdSpecialInfoStr info{database_, nullptr, nullptr, nullptr};
        library_.StartAlarmFwdPager(&info);
    }
    ~Line() { library_.StopAlarmFwdPager(); }
    Line(const Line&) = delete;
    Line& operator=(const Line&) = delete;

    // Returns the alarm's number.
    int32_t HandOver(std::string pager) {
        std::string group = "ALL/1", server = "pumps", extra;
        int32_t alarm = RaiseToBePaged(group);
        char* groups[] = {group.data()};
        char* pagers[] = {pager.data()};
        FwdSpecialInfoStr info{database_, &alarm, nullptr, groups};
        library_.AlarmFwdPager(&info, server.data(), extra.data(), pagers, 1);
        if (rings_) {
            host::RingBell();
        }
        return alarm;
    }

    void WaitForTheEndOf(int32_t alarm) const {
        while (StateOf(alarm) == "2") {
            sleep(1);
        }
    }

 private:
    int32_t RaiseToBePaged(const std::string& group) const {
        host::Connection database(database_);
        const int32_t alarm = host::RaiseAlarm(database, {group, "1", "pumps", "x"}, time(nullptr));
        const std::string number = std::to_string(alarm);
        database.Execute(
            ("UPDATE AlarmLog SET pagerstate = '2' WHERE alarmlogID = " + number).c_str());
        return alarm;
    }

    std::string StateOf(int32_t alarm) const {
        host::Connection database(database_);
        return host::FindAlarm(database, std::to_string(alarm))->state;
    }

    host::Library library_;
    char* database_;
    bool rings_;
};

}  // namespace

int main(int, char** argv) {
    const std::string device = argv[3];
    host::SetOwnDevice(device == "-" ? "" : device);
    Line line(argv[1], argv[2], argv[4] == std::string("ring"));
    line.HandOver("tech");
    sleep(10);
    line.WaitForTheEndOf(line.HandOver("duty"));
    sleep(5);
    line.WaitForTheEndOf(line.HandOver("osaka"));
    return 0;
}
