#include "bench/scale_reference.h"

#include <cstring>
#include <stdexcept>
#include <vector>

#include "bench/scale_site.h"

namespace bench {
namespace {

constexpr const char* kSettings =
    "PRAGMA journal_mode = WAL;"
    "PRAGMA synchronous = FULL;";

}  // namespace

ReferenceStore::ReferenceStore(const std::string& database) {
    if (sqlite3_open(database.c_str(), &database_) != SQLITE_OK ||
        sqlite3_exec(database_, kSettings, nullptr, nullptr, nullptr) != SQLITE_OK) {
        throw std::runtime_error(sqlite3_errmsg(database_));
    }
    pending_ = Prepare("SELECT AlmLogID FROM AlarmFwd_PagerEvents WHERE PagerState = '2'");
    alarm_ = Prepare("SELECT * FROM AlarmLog WHERE alarmlogID = ?");
    forwarding_ = Prepare(
        "SELECT alarmName, details, stationstate, pagerstate, timestamp FROM AlarmLog"
        " WHERE alarmlogID = ?");
    pager_ = Prepare("SELECT * FROM AlarmFwd_PagerSetting WHERE description = ?");
    event_ = Prepare("SELECT * FROM AlarmFwd_PagerEvents WHERE AlmLogID = ?");
    insert_ = Prepare(
        "INSERT INTO AlarmFwd_PagerEvents (AlmLogID, AlmGroup, PagerDescr, PagerState,"
        " PagerRetries, Severity, ServerN) VALUES (?, ?, ?, '2', '0', '2', ?)");
    delete_ = Prepare("DELETE FROM AlarmFwd_PagerEvents WHERE AlmLogID = ?");
    states_ = Prepare("SELECT PagerState FROM AlarmFwd_PagerEvents WHERE AlmLogID = ?");
    fold_ = Prepare("UPDATE AlarmLog SET pagerstate = '2' WHERE alarmlogID = ?");
}

ReferenceStore::~ReferenceStore() {
    while (sqlite3_stmt* statement = sqlite3_next_stmt(database_, nullptr)) {
        sqlite3_finalize(statement);
    }
    sqlite3_close(database_);
}

sqlite3_stmt* ReferenceStore::Prepare(const char* sql) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(database_, sql, -1, &statement, nullptr) != SQLITE_OK) {
        throw std::runtime_error(sqlite3_errmsg(database_));
    }
    return statement;
}

// Reads every cell of every row, as a caller would.
void ReferenceStore::Run(sqlite3_stmt* statement, const char* value) {
    if (value != nullptr) {
        sqlite3_bind_text(statement, 1, value, -1, SQLITE_STATIC);
    }
    int result = 0;
    while ((result = sqlite3_step(statement)) == SQLITE_ROW) {
        for (int column = 0; column < sqlite3_column_count(statement); ++column) {
            sqlite3_column_text(statement, column);
        }
    }
    sqlite3_reset(statement);
    if (result != SQLITE_DONE) {
        throw std::runtime_error(sqlite3_errmsg(database_));
    }
}

void ReferenceStore::Insert(const char* alarm) {
    sqlite3_bind_text(insert_, 2, kGroup, -1, SQLITE_STATIC);
    sqlite3_bind_text(insert_, 3, kPager, -1, SQLITE_STATIC);
    sqlite3_bind_text(insert_, 4, kServer, -1, SQLITE_STATIC);
    Run(insert_, alarm);
}

void ReferenceStore::StartUp() {
    std::vector<std::string> alarms;
    while (sqlite3_step(pending_) == SQLITE_ROW) {
        alarms.emplace_back(reinterpret_cast<const char*>(sqlite3_column_text(pending_, 0)));
    }
    sqlite3_reset(pending_);
    for (const std::string& alarm : alarms) {
        Run(forwarding_, alarm.c_str());
        Run(pager_, kPager);
        Run(alarm_, alarm.c_str());
        Run(event_, alarm.c_str());
        Run(delete_, alarm.c_str());
        Insert(alarm.c_str());
    }
}

void ReferenceStore::Pass(int32_t pages) {
    for (int32_t alarm = 1; alarm <= pages; ++alarm) {
        Run(forwarding_, std::to_string(alarm).c_str());
    }
}

void ReferenceStore::Queue(int32_t alarm) {
    const std::string text = std::to_string(alarm);
    Run(pager_, kPager);
    Run(alarm_, text.c_str());
    Run(event_, text.c_str());
    Insert(text.c_str());
}

void ReferenceStore::Acknowledge(int32_t alarm) {
    Run(delete_, std::to_string(alarm).c_str());
}

void ReferenceStore::Fold(int32_t alarm) {
    const std::string text = std::to_string(alarm);
    Run(states_, text.c_str());
    Run(fold_, text.c_str());
}

}  // namespace bench
