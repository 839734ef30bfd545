// The tests' side of a MemoryStore, and the list of stores that live. Tested by
// tests/unit/support/memory_store_test.cpp.
#include "tests/support/memory_store.h"

#include <algorithm>
#include <mutex>

#include "tests/support/store_state.h"

namespace test_support {
namespace {

constexpr size_t kHoursOfWeek = 7 * 24;

std::mutex living_mutex;
std::vector<std::shared_ptr<StoreState>> living;  // guarded by living_mutex

std::vector<std::shared_ptr<StoreState>> LivingStores() {
    const std::lock_guard guard(living_mutex);
    return living;
}

std::shared_ptr<StoreState> FindStore(const std::function<bool(const StoreState&)>& is_wanted) {
    for (auto& store : LivingStores()) {
        const std::lock_guard guard(store->mutex);
        if (is_wanted(*store)) {
            return store;
        }
    }
    return nullptr;
}

// "Mo00" ... "Su23", then the description.
std::vector<std::string> TimeModelColumns() {
    std::vector<std::string> columns;
    for (const char* day : {"Mo", "Tu", "We", "Th", "Fr", "Sa", "Su"}) {
        for (int hour = 0; hour < 24; ++hour) {
            columns.push_back(day + std::string(hour < 10 ? "0" : "") + std::to_string(hour));
        }
    }
    columns.emplace_back("description");
    return columns;
}

std::string Joined(const std::vector<std::string>& lines) {
    std::string joined;
    for (const std::string& line : lines) {
        joined += line + "\n";
    }
    return joined;
}

}  // namespace

std::shared_ptr<StoreState> StoreOf(const std::string& database) {
    return FindStore([&](const StoreState& store) { return store.database == database; });
}

std::shared_ptr<StoreState> StoreOf(DBAsciiHandle handle) {
    return FindStore([&](const StoreState& store) { return store.Owns(handle); });
}

std::shared_ptr<StoreState> StoreOf(DBAsciiRowSet rows) {
    return FindStore([&](const StoreState& store) { return store.Owns(rows); });
}

void ComplainToAll(const std::string& complaint) {
    for (const auto& store : LivingStores()) {
        const std::lock_guard guard(store->mutex);
        store->Complain(complaint);
    }
}

MemoryStore::MemoryStore(std::string database)
    : state_(std::make_shared<StoreState>(std::move(database))) {
    const std::lock_guard guard(living_mutex);
    living.push_back(state_);
}

MemoryStore::~MemoryStore() {
    const std::lock_guard guard(living_mutex);
    living.erase(std::find(living.begin(), living.end(), state_));
}

void MemoryStore::AddTable(const std::string& table, std::vector<std::string> columns) {
    const std::lock_guard guard(state_->mutex);
    state_->tables.insert_or_assign(table, MemoryTable(std::move(columns)));
}

void MemoryStore::AddAllTables() {
    AddTable(
        "AlarmFwd_COMProperties",
        {"Description", "Select",   "Baud",         "Flow",         "PagerData",    "PagerParity",
         "PagerStop",   "Init",     "Reset",        "PagerDial",    "SMS1Data",     "SMS1Parity",
         "SMS1Stop",    "SMS1Dial", "SMS1Protocol", "SMS1Restrict", "SMS2Data",     "SMS2Parity",
         "SMS2Stop",    "SMS2Dial", "SMS2Protocol", "SMS2Restrict", "PagerActivity"});
    AddTable("AlarmFwd_PagerSetting", {"description", "owner", "comport", "pgtype", "pgnumber",
                                       "numretries", "retrydelay", "timemodel"});
    AddTable("AlarmFwd_TMSetting", TimeModelColumns());
    AddTable("AlarmFwd_PagerEvents", {"AlmLogID", "AlmGroup", "PagerDescr", "ServerN", "Severity",
                                      "PagerRetries", "PagerState"});
    AddTable("AlarmLog",
             {"alarmlogID", "acktime", "alarmack", "alarmName", "alarmnote", "broadcaststate",
              "details", "eventlogstate", "execstate", "mailstate", "monitoronly", "pagerstate",
              "server", "severity", "stationstate", "timestamp"});
}

void MemoryStore::Insert(const std::string& table, const Cells& cells) {
    const std::lock_guard guard(state_->mutex);
    state_->tables.at(table).Append(cells);
}

void MemoryStore::InsertTimeModel(const std::string& description, const std::string& hours) {
    const auto columns = TimeModelColumns();
    Cells cells = {{"description", description}};
    for (size_t i = 0; i < kHoursOfWeek; ++i) {
        cells.emplace_back(columns[i], std::string(1, i < hours.size() ? hours[i] : '0'));
    }
    Insert("AlarmFwd_TMSetting", cells);
}

size_t MemoryStore::Update(const std::string& table, const Key& key, const Cells& cells) {
    const std::lock_guard guard(state_->mutex);
    MemoryTable& changed = state_->tables.at(table);
    const auto rows = changed.Select({{key.column, key.text}});
    for (const MemoryRow& row : rows) {
        changed.Update(row.id, cells);
    }
    return rows.size();
}

size_t MemoryStore::Delete(const std::string& table, const Key& key) {
    const std::lock_guard guard(state_->mutex);
    return state_->tables.at(table).Delete({{key.column, key.text}});
}

size_t MemoryStore::RowCount(const std::string& table) const {
    const std::lock_guard guard(state_->mutex);
    return state_->tables.at(table).Rows().size();
}

std::vector<std::string> MemoryStore::Column(const std::string& table,
                                             const std::string& column) const {
    const std::lock_guard guard(state_->mutex);
    const MemoryTable& read = state_->tables.at(table);
    const size_t place = read.Place(column);
    std::vector<std::string> cells;
    for (const MemoryRow& row : read.Rows()) {
        cells.push_back(row.cells[place].value_or("(null)"));
    }
    return cells;
}

std::string MemoryStore::Read(const std::string& table, const Key& key,
                              const std::string& column) const {
    const std::lock_guard guard(state_->mutex);
    const MemoryTable& read = state_->tables.at(table);
    const size_t place = read.Place(column);
    const auto rows = read.Select({{key.column, key.text}});
    return rows.empty() ? "(no row)" : rows[0].cells[place].value_or("(null)");
}

void MemoryStore::LockAsOther(const std::string& table) {
    const std::lock_guard guard(state_->mutex);
    if (!state_->TakeLock(table, nullptr)) {
        state_->Complain("LockAsOther(" + table + "): this thread holds it already");
    }
}

void MemoryStore::UnlockAsOther(const std::string& table) {
    const std::lock_guard guard(state_->mutex);
    state_->ReleaseLock(table);
}

std::vector<std::string> MemoryStore::Calls() const {
    return CallsWith("");
}

std::vector<std::string> MemoryStore::Calls(Call kind) const {
    const std::lock_guard guard(state_->mutex);
    return state_->journal.Lines([=](Call each, const std::string&) { return each == kind; });
}

std::vector<std::string> MemoryStore::CallsWith(std::string_view part) const {
    const std::lock_guard guard(state_->mutex);
    return state_->journal.Lines(
        [=](Call, const std::string& line) { return line.find(part) != std::string::npos; });
}

void MemoryStore::ForgetCalls() {
    const std::lock_guard guard(state_->mutex);
    state_->journal.Forget();
}

void MemoryStore::Fail(Call kind, int nth, int32_t result) {
    const std::lock_guard guard(state_->mutex);
    state_->journal.Fail(kind, nth, result);
}

void MemoryStore::FailAnyCall(int nth, int32_t result) {
    const std::lock_guard guard(state_->mutex);
    state_->journal.Fail(std::nullopt, nth, result);
}

void MemoryStore::FailAlways(Call kind, int32_t result) {
    const std::lock_guard guard(state_->mutex);
    state_->journal.FailAlways(kind, result);
}

void MemoryStore::StopFailing() {
    const std::lock_guard guard(state_->mutex);
    state_->journal.StopFailing();
}

void MemoryStore::HandOutEmptyRowSets() {
    const std::lock_guard guard(state_->mutex);
    state_->hands_out_empty_row_sets = true;
}

void MemoryStore::GiveUpLockWhileWriting() {
    const std::lock_guard guard(state_->mutex);
    state_->write_gives_up_lock = true;
}

void MemoryStore::Before(Call kind, int nth, std::function<void()> hook) {
    const std::lock_guard guard(state_->mutex);
    state_->journal.Before(kind, nth, std::move(hook));
}

void MemoryStore::BeforeEach(std::function<void(const std::string&)> hook) {
    const std::lock_guard guard(state_->mutex);
    state_->journal.BeforeEach(std::move(hook));
}

std::string MemoryStore::Verdict() const {
    const std::lock_guard guard(state_->mutex);
    return Joined(state_->Complaints());
}

size_t MemoryStore::OpenHandles() const {
    const std::lock_guard guard(state_->mutex);
    return state_->OpenHandles();
}

}  // namespace test_support
