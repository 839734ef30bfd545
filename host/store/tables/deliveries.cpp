// Deliveries. Tested by tests/unit/host/intake_test.cpp and hand_over_test.cpp.
#include "host/store/tables/deliveries.h"

#include <cstdlib>
#include <tuple>

#include "host/store/schema.h"
#include "host/store/tables/history.h"
#include "host/store/tables/states.h"
#include "host/text/controls.h"

namespace host {
namespace {

constexpr const char* kSelectDelivery =
    "SELECT alarm, place, alarm_group, pager, since, answer IS NOT NULL, answer, line,"
    " tries, unknown, severity FROM "
    "Host_Deliveries ";

constexpr const char* kInTheirOrder = " ORDER BY severity, CAST(alarm AS INTEGER), place";

std::vector<Delivery> ReadDeliveries(Statement& statement) {
    std::vector<Delivery> deliveries;
    while (statement.Step()) {
        const bool answered = statement.Number(5) != 0;
        const auto answer = static_cast<int32_t>(statement.Number(6));
        deliveries.push_back({std::string(statement.Text(0)), statement.Number(1),
                              WithoutControls(statement.Text(2)),
                              WithoutControls(statement.Text(3)), statement.Number(4),
                              answered ? std::optional<int32_t>(answer) : std::nullopt,
                              std::string(statement.Text(7)), statement.Number(8),
                              statement.Number(9) != 0, statement.Number(10)});
    }
    return deliveries;
}

void InsertDelivery(Connection& connection, const Alarm& alarm, int64_t place,
                    const std::string& pager) {
    Statement(connection,
              "INSERT INTO Host_Deliveries (alarm, place, alarm_group, pager, since, severity)"
              " VALUES (?1, ?2, ?3, ?4, (SELECT coalesce(max(row_id), 0) FROM Host_History), " +
                  SeverityOf("?1") + ")")
        .Bind(alarm.number)
        .Bind(place)
        .Bind(alarm.group)
        .Bind(pager)
        .Run();
}

// A page that was taken from a line, and that no other gets, ends so.
void EndMovedPage(Connection& connection, const std::string& alarm, int64_t place) {
    Statement statement(connection,
                        "SELECT alarm, alarm_group, pager FROM Host_Deliveries AS owed"
                        " WHERE alarm = ? AND place = ? AND (SELECT change FROM Host_History"
                        "  WHERE alarm = owed.alarm AND alarm_group = owed.alarm_group"
                        "  AND pager = owed.pager ORDER BY row_id DESC LIMIT 1) = ?");
    statement.Bind(alarm).Bind(place).Bind(std::string_view(kMoved));
    for (const PageKey& page : KeysIn(statement)) {
        WriteHistory(connection,
                     {kRemoved, page.alarm, page.group, page.pager, kStateBeingPaged, "0"});
    }
}

bool WentToSomebody(Connection& connection, const std::string& alarm) {
    Statement statement(connection,
                        "SELECT 1 FROM Host_Deliveries WHERE alarm = ?"
                        " AND (answer IS NULL OR answer >= 1) LIMIT 1");
    return statement.Bind(alarm).Step();
}

// Of an alarm that these pagers get. One that goes to nobody ends as one that reached nobody.
const char* StateWith(const std::vector<std::string>& pagers, const Alarm& alarm) {
    if (alarm.acknowledged) {
        return kStateAcknowledged;
    }
    return pagers.empty() ? kStateOffLimit : kStateBeingPaged;
}

// Bound to the line; where that is empty: all. An index finds those of a line, however many wait
// for none.
constexpr const char* kOpenOnesOfLine = "WHERE answer IS NULL AND line > '' AND line = ?1";
constexpr const char* kOpenOnes = "WHERE answer IS NULL AND ?1 = ''";

const char* OpenOnesOf(const std::string& line) {
    return line.empty() ? kOpenOnes : kOpenOnesOfLine;
}

// One that can't be read doesn't hide the others.
std::vector<Delivery> OpenOnesOneByOne(Connection& connection, const std::string& line) {
    const std::string which = OpenOnesOf(line);
    Statement count(connection, "SELECT count(*) FROM Host_Deliveries " + which);
    count.Bind(line).Step();
    std::vector<Delivery> deliveries;
    for (int64_t before = 0; before < count.Number(0); ++before) {
        try {
            Statement statement(connection, kSelectDelivery + which + " LIMIT 1 OFFSET ?2");
            statement.Bind(line).Bind(before);
            for (Delivery& delivery : ReadDeliveries(statement)) {
                deliveries.push_back(std::move(delivery));
            }
        } catch (const RowTooLarge&) {
            continue;
        }
    }
    return deliveries;
}

std::vector<Delivery> OpenOnes(Connection& connection, const std::string& line) {
    try {
        Statement statement(connection,
                            std::string(kSelectDelivery) + OpenOnesOf(line) + kInTheirOrder);
        statement.Bind(line);
        return ReadDeliveries(statement);
    } catch (const RowTooLarge&) {
        return OpenOnesOneByOne(connection, line);
    }
}

constexpr const char* kWaits = "answer IS NULL AND line = '' AND unknown = 0";

// On a row of Host_Deliveries, "owed": its alarm isn't there or needs no paging, or a library has
// had the page.
constexpr const char* kNeedsNoLine =
    "(SELECT count(*) <> 1 OR max(CASE WHEN alarmack IN ('', '0')"
    "   AND pagerstate <> '1' THEN 0 ELSE 1 END) = 1 FROM AlarmLog"
    "   WHERE alarmlogID = owed.alarm)"
    " OR EXISTS (SELECT 1 FROM Host_History AS history"
    "   WHERE history.alarm = owed.alarm AND history.pager = owed.pager"
    "   AND history.alarm_group = owed.alarm_group"
    "   AND history.row_id > owed.since)";

}  // namespace

// One without a severity is the mildest.
std::string SeverityOf(const std::string& alarm) {
    return "coalesce((SELECT min(nullif(CAST(severity AS INTEGER), 0)) FROM AlarmLog"
           " WHERE alarmlogID = " +
           alarm + "), 9)";
}

void WriteDeliveries(Connection& connection, const Alarm& alarm,
                     const std::vector<std::string>& pagers) {
    Statement(connection, "DELETE FROM Host_Deliveries WHERE alarm = ?").Bind(alarm.number).Run();
    int64_t place = 0;
    for (const std::string& pager : pagers) {
        InsertDelivery(connection, alarm, place++, pager);
    }
    SetPagerState(connection, alarm.row, StateWith(pagers, alarm));
}

void PlanDeliveries(Connection& connection, const Alarm& alarm,
                    const std::vector<std::string>& pagers) {
    WriteTransaction transaction(connection);
    WriteDeliveries(connection, alarm, pagers);
    transaction.Commit();
}

std::vector<Delivery> DeliveriesOf(Connection& connection, const std::string& alarm) {
    Statement statement(connection,
                        std::string(kSelectDelivery) + "WHERE alarm = ? ORDER BY place");
    statement.Bind(alarm);
    return ReadDeliveries(statement);
}

std::vector<Delivery> OpenDeliveries(Connection& connection) {
    return OpenOnes(connection, "");
}

std::vector<Delivery> OpenDeliveriesOf(Connection& connection, const std::string& line) {
    return OpenOnes(connection, line);
}

// From one pager to the next by the index.
std::string WaitingPagers() {
    const std::string first = std::string("SELECT min(pager) FROM Host_Deliveries WHERE ") + kWaits;
    return "WITH RECURSIVE waiting(pager) AS (" + first + " UNION ALL SELECT (" + first +
           " AND Host_Deliveries.pager > waiting.pager) FROM waiting"
           " WHERE waiting.pager IS NOT NULL)"
           " SELECT pager FROM waiting WHERE pager IS NOT NULL";
}

std::vector<std::string> PagersThatWait(Connection& connection) {
    return Statement(connection, WaitingPagers()).Texts();
}

std::vector<Delivery> FirstWaiting(Connection& connection, const std::string& pager,
                                   int64_t count) {
    Statement statement(connection, std::string(kSelectDelivery) + "WHERE " + kWaits +
                                        " AND pager = ?" + kInTheirOrder + " LIMIT ?");
    statement.Bind(pager).Bind(count);
    return ReadDeliveries(statement);
}

bool GoesBefore(const Delivery& one, const Delivery& other) {
    const auto order = [](const Delivery& delivery) {
        return std::make_tuple(delivery.severity, std::strtoll(delivery.alarm.c_str(), nullptr, 10),
                               delivery.place);
    };
    return order(one) < order(other);
}

std::vector<LookedAt> LookWhetherSettled(Connection& connection, const DeliveryKey& behind,
                                         int64_t count) {
    std::vector<LookedAt> looked_at;
    Statement statement(
        connection, std::string("SELECT alarm, place, CASE WHEN ") + kNeedsNoLine +
                        " THEN 1 ELSE 0 END FROM (SELECT * FROM Host_Deliveries WHERE " + kWaits +
                        " AND (alarm, place) > (?, ?) ORDER BY alarm, place LIMIT ?) AS owed"
                        " ORDER BY alarm, place");
    statement.Bind(behind.first).Bind(behind.second).Bind(count);
    while (statement.Step()) {
        looked_at.push_back(
            {{std::string(statement.Text(0)), statement.Number(1)}, statement.Number(2) != 0});
    }
    return looked_at;
}

std::vector<Delivery> OwedDeliveries(Connection& connection) {
    Statement statement(connection, std::string(kSelectDelivery) +
                                        "WHERE answer IS NULL AND unknown = 0"
                                        " AND EXISTS (SELECT 1 FROM AlarmLog"
                                        " WHERE alarmlogID = Host_Deliveries.alarm"
                                        " AND alarmack IN ('', '0') AND pagerstate <> '1')");
    return ReadDeliveries(statement);
}

std::vector<int64_t> OpenPlaces(Connection& connection, const std::string& alarm) {
    return Statement(connection,
                     "SELECT place FROM Host_Deliveries WHERE alarm = ? AND answer IS NULL"
                     " ORDER BY place")
        .Bind(alarm)
        .Numbers();
}

std::optional<Delivery> FindDelivery(Connection& connection, const PageKey& page) {
    for (const Delivery& delivery : DeliveriesOf(connection, page.alarm)) {
        if (delivery.group == page.group && delivery.pager == page.pager) {
            return delivery;
        }
    }
    return std::nullopt;
}

bool IsOpen(const std::optional<Delivery>& delivery) {
    return delivery && !delivery->answer;
}

bool GiveToLine(Connection& connection, const Delivery& delivery, const std::string& line) {
    WriteTransaction transaction(connection);
    Statement(connection,
              "UPDATE Host_Deliveries SET line = ? WHERE alarm = ? AND place = ?"
              " AND answer IS NULL AND line = '' AND unknown = 0")
        .Bind(line)
        .Bind(delivery.alarm)
        .Bind(delivery.place)
        .Run();
    const bool given = connection.Changes() > 0;
    transaction.Commit();
    return given;
}

void SetDeliveryLine(Connection& connection, const Delivery& delivery, const std::string& line) {
    Statement(connection, "UPDATE Host_Deliveries SET line = ? WHERE alarm = ? AND place = ?")
        .Bind(line)
        .Bind(delivery.alarm)
        .Bind(delivery.place)
        .Run();
}

void ForgetTries(Connection& connection, const Delivery& delivery) {
    Statement(connection, "UPDATE Host_Deliveries SET tries = 0 WHERE alarm = ? AND place = ?")
        .Bind(delivery.alarm)
        .Bind(delivery.place)
        .Run();
}

void SetUnknown(Connection& connection, const Delivery& delivery, bool unknown) {
    Statement(connection, "UPDATE Host_Deliveries SET unknown = ? WHERE alarm = ? AND place = ?")
        .Bind(int64_t{unknown})
        .Bind(delivery.alarm)
        .Bind(delivery.place)
        .Run();
}

void AddDelivery(Connection& connection, const PageKey& page) {
    Statement(connection,
              "INSERT INTO Host_Deliveries (alarm, place, alarm_group, pager, since, severity)"
              " SELECT ?1, coalesce(max(place) + 1, 0), ?2, ?3, 0, " +
                  SeverityOf("?1") + " FROM Host_Deliveries WHERE alarm = ?1")
        .Bind(page.alarm)
        .Bind(page.group)
        .Bind(page.pager)
        .Run();
}

void OpenAgain(Connection& connection, const Delivery& delivery, int64_t tries) {
    Statement(connection,
              "UPDATE Host_Deliveries SET answer = NULL, line = '', tries = tries + ?,"
              " since = (SELECT coalesce(max(row_id), 0) FROM Host_History)"
              " WHERE alarm = ? AND place = ?")
        .Bind(tries)
        .Bind(delivery.alarm)
        .Bind(delivery.place)
        .Run();
}

void CloseDelivery(Connection& connection, const std::string& alarm, int64_t place,
                   int32_t answer) {
    Statement(connection, "UPDATE Host_Deliveries SET answer = ? WHERE alarm = ? AND place = ?")
        .Bind(int64_t{answer})
        .Bind(alarm)
        .Bind(place)
        .Run();
    if (answer != kQueued && answer != kWasQueued) {
        EndMovedPage(connection, alarm, place);
    }
}

void NoteAnswer(Connection& connection, const Delivery& delivery, int32_t answer) {
    WriteTransaction transaction(connection);
    CloseDelivery(connection, delivery.alarm, delivery.place, answer);
    transaction.Commit();
}

bool WasEverQueued(Connection& connection, const Delivery& delivery) {
    Statement statement(connection,
                        "SELECT 1 FROM Host_History"
                        " WHERE alarm = ? AND alarm_group = ? AND pager = ? AND row_id > ?");
    return statement.Bind(delivery.alarm)
        .Bind(delivery.group)
        .Bind(delivery.pager)
        .Bind(delivery.since)
        .Step();
}

void CloseAlarm(Connection& connection, const Alarm& alarm) {
    WriteTransaction transaction(connection);
    if (!WentToSomebody(connection, alarm.number)) {
        SetPagerState(connection, alarm.row, kStateOffLimit);
    }
    transaction.Commit();
}

}  // namespace host
