// Cells of any bytes and length and null cells, read by every operation of the tables: texts arrive
// as they stand, numbers as the nearest that fits, nothing is left open.
#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "modem/port_row.h"
#include "tests/fuzz/input.h"
#include "tests/support/memory_store.h"
#include "tests/unit/tables/records.h"

namespace {

using fuzz::Expect;
using fuzz::Input;
using fuzz::UpToNul;
using test_support::MemoryStore;
using Cells = MemoryStore::Cells;

constexpr const char* kDatabase = MemoryStore::kDatabase;
constexpr const char* kPorts = "AlarmFwd_COMProperties";
constexpr const char* kPagers = "AlarmFwd_PagerSetting";
constexpr const char* kEvents = "AlarmFwd_PagerEvents";
constexpr const char* kAlarms = "AlarmLog";

// The fields of the last row that was filed, by column.
class Row {
 public:
    Row(MemoryStore& store, Input& input) : store_(store), input_(input) {}

    Row& Key(const std::string& column, const std::string& text) {
        cells_.emplace_back(column, text);
        return *this;
    }

    Row& Any(std::initializer_list<const char*> columns) {
        for (const char* column : columns) {
            if (input_.OnceIn(8)) {
                cells_.emplace_back(column, std::nullopt);
            } else {
                cells_.emplace_back(column, input_.Text());
            }
        }
        return *this;
    }

    void File(const char* table) { store_.Insert(table, cells_); }

    // Null for a null cell.
    std::optional<std::string> operator[](std::string_view column) const {
        for (const auto& [name, cell] : cells_) {
            if (name == column && cell) {
                return UpToNul(*cell);
            }
        }
        return std::nullopt;
    }

 private:
    MemoryStore& store_;
    Input& input_;
    Cells cells_;
};

bool IsSame(const std::optional<std::string>& cell, const char* field) {
    return cell ? field != nullptr && *cell == field : field == nullptr;
}

bool IsSame(const std::optional<std::string>& cell, int32_t field) {
    const long long wide = std::strtoll(cell.value_or("").c_str(), nullptr, 10);
    return field == static_cast<int32_t>(std::clamp<long long>(wide, INT32_MIN, INT32_MAX));
}

void ReadPort(MemoryStore& store, Input& input) {
    const std::string name = UpToNul(input.Text());
    Row row(store, input);
    row.Key("Description", name)
        .Any({"Select", "Baud", "Flow", "PagerData", "PagerParity", "PagerStop", "Init", "Reset",
              "PagerDial", "PagerActivity", "SMS1Dial", "SMS2Restrict"})
        .File(kPorts);
    const auto port = Hold(CDB_ComPorts(kDatabase).FindComPort(name.c_str()));
    if (port == nullptr) {
        return;
    }
    Expect(IsSame(row["Baud"], port->baud) && IsSame(row["Init"], port->modem->init) &&
               IsSame(row["SMS2Restrict"], port->modem->sms2Restrict),
           "a port's texts are its cells");
    Expect(port->select == (row["Select"].value_or("").substr(0, 1) == "1"),
           "selected exactly when the cell begins with 1");
    const std::unique_ptr<ComPort> made = MakeComPort(*port);
    Expect(made->name == name.c_str(), "a port has the name of its row");
    delete made->modemSet;
}

void ReadPagers(MemoryStore& store, Input& input) {
    const std::string name = UpToNul(input.Text());
    Row row(store, input);
    row.Key("description", name)
        .Any({"owner", "comport", "pgtype", "pgnumber", "numretries", "retrydelay", "timemodel"})
        .File(kPagers);
    if (const auto pager = Hold(CDB_PagerSettings(kDatabase).GetPager(name.c_str()))) {
        Expect(IsSame(row["owner"], pager->owner) && IsSame(row["pgnumber"], pager->pagerNumber) &&
                   IsSame(row["timemodel"], pager->timeModel),
               "a pager's texts are its cells");
        Expect(IsSame(row["pgtype"], pager->pagerType) &&
                   IsSame(row["numretries"], pager->numRetries) &&
                   IsSame(row["retrydelay"], pager->retryDelay),
               "a pager's numbers are the nearest that fit");
    }
    Pager** pagers = nullptr;
    const int32_t count = CDB_PagerSettings(kDatabase).GetAllPagers(&pagers);
    HoldAll(pagers, count);
}

void ReadTimeModel(MemoryStore& store, Input& input) {
    const std::string name = UpToNul(input.Text());
    const std::string hours = input.Text();
    store.InsertTimeModel(name, hours);
    const auto model = Hold(CDB_TimeModels(kDatabase).FindTimeModel(name.c_str()));
    if (model != nullptr) {
        const int day = input.Upto(6);
        const int hour = input.Upto(23);
        const auto at = static_cast<size_t>(day * 24 + hour);
        Expect(CDB_TimeModels::IsHourSet(model.get(), day, hour) ==
                   (at < hours.size() && hours[at] == '1'),
               "only a 1 allows an hour");
    }
}

void ReadAndChangeEvents(MemoryStore& store, Input& input) {
    CDB_PagerFwdEvents events(kDatabase);
    const std::string group = UpToNul(input.Text());
    const std::string pager = UpToNul(input.Text());
    Row row(store, input);
    row.Key("AlmLogID", "7")
        .Key("AlmGroup", group)
        .Key("PagerDescr", pager)
        .Any({"ServerN", "Severity", "PagerRetries", "PagerState"})
        .File(kEvents);
    if (const auto event = Hold(events.FindFwdEvent(7, group.c_str(), pager.c_str()))) {
        Expect(IsSame(row["ServerN"], event->serverN) &&
                   IsSame(row["Severity"], static_cast<int32_t>(event->severity)) &&
                   IsSame(row["PagerState"], static_cast<int32_t>(event->pagerState)),
               "an event's fields are its cells");
    }
    PagerFwdEvent** active = nullptr;
    const int32_t count = events.GetActiveEvents(&active);
    HoldAll(active, count);

    // Another alarm's row of the same texts is never hit.
    const std::string server = UpToNul(input.Text());
    events.NewPagerFwdEvent(group.c_str(), 8, pager.c_str(), server.c_str(), kSeverityMajor, 1,
                            kForwardBeingPaged);
    const int32_t set = events.SetPagerForwarded(group.c_str(), 7, pager.c_str(), 2, kForwardDone);
    events.UpdateAlarmLog(7);
    const int32_t gone = events.DeletePagerFwdEvent(group.c_str(), 7, pager.c_str());
    Expect(set >= 0 && set <= 1 && gone == set, "a key hits its own row at most");
    Expect(store.Read(kEvents, {"AlmLogID", "8"}, "PagerState") == "2",
           "the row of another alarm stays as it is");
}

void ReadAlarm(MemoryStore& store, Input& input) {
    CDB_AlarmLog log(kDatabase);
    Row row(store, input);
    row.Key("alarmlogID", "7")
        .Any({"acktime", "alarmName", "alarmnote", "details", "pagerstate", "server", "severity",
              "timestamp"})
        .Key("stationstate", "2")
        .File(kAlarms);
    if (const auto entry = Hold(log.FindAlarmLogEntry(7))) {
        Expect(IsSame(row["details"], entry->details) &&
                   IsSame(row["timestamp"], entry->timestamp) &&
                   IsSame(row["severity"], static_cast<int32_t>(entry->severity)),
               "an alarm's fields are its cells");
    }
    const auto info = Hold(log.GetAlarmLogFwdInfo(7));
    Expect(info != nullptr && IsSame(row["alarmName"], info->alarmName), "one row is found");
    AlarmLogEntry** entries = nullptr;
    const int32_t count = log.GetAllAlarmLogEntries(&entries);
    HoldAll(entries, count);
    Expect(log.SetPagerState(7, kForwardDone) == 1, "an alarm's state can be set");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Input input(data, size);
    MemoryStore store;
    store.AddAllTables();
    void (*const reads[])(MemoryStore&, Input&) = {ReadPort, ReadPagers, ReadTimeModel,
                                                   ReadAndChangeEvents, ReadAlarm};
    reads[input.Upto(4)](store, input);
    const std::string verdict = store.Verdict();
    Expect(verdict.empty(), verdict.c_str());
    return 0;
}
