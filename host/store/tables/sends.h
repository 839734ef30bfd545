// Host_Sends: every sending of a page, as the trace tells it: whether it got through, failed, or
// was skipped since the pager's hours barred it. The tables of the library tell none of this.
//
// Errors     StoreError.
#ifndef PAGERFWD_HOST_STORE_TABLES_SENDS_H
#define PAGERFWD_HOST_STORE_TABLES_SENDS_H

#include <cstdint>
#include <ctime>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/store/connection.h"
#include "host/trace/traced_page.h"

namespace host {

// Texts as the tables have them.
struct Send {
    std::time_t at = 0;  // when it ended
    int64_t seconds = 0;
    std::string alarm;  // its number; empty: a test page, or it isn't known
    std::string pager;
    std::string port;  // the line
    TracedPage::Outcome outcome = TracedPage::Outcome::kCutOff;
    int64_t result = 0;  // the library's; 0 where it was sent
    std::string reason;  // why not, in words
};

void RecordSend(Connection& connection, const Send& send);

// Until when the sendings of the line's last engine are recorded. None: it had no engine.
std::optional<std::time_t> RecordedUntil(Connection& connection, const std::string& line);

// In the order in which they ended.
std::vector<Send> SendsOf(Connection& connection, const std::string& alarm);

// A row of the record, by its number.
struct RecordedSend {
    int64_t row = 0;
    Send send;
};
std::optional<RecordedSend> FindSend(Connection& connection, int64_t row);
// As SendsOf.
std::vector<RecordedSend> RecordedSendsOf(Connection& connection, const std::string& alarm);

// Those that came to nothing, the last first.
struct FailedWanted {
    int64_t before = INT64_MAX;  // only rows before this one
    int64_t count = 0;           // at most
    std::string pager;           // empty: any
    std::time_t since = 0;
    std::time_t until = 0;  // 0: whenever
};
std::vector<RecordedSend> FailedSends(Connection& connection, const FailedWanted& wanted);

// The last row of the record; 0 where there is none.
int64_t LastSend(Connection& connection);
// Those of the rows behind the first, up to the second.
std::vector<Send> SendsBetween(Connection& connection, int64_t first, int64_t last);

// By port: when a page last got through; when one last was sent, whatever it came to. A port that
// isn't among the latter has sent nothing for long.
std::map<std::string, std::time_t> LastSuccesses(Connection& connection);
std::map<std::string, std::time_t> LastSendings(Connection& connection);

const char* WordOf(TracedPage::Outcome outcome);

}  // namespace host

#endif
