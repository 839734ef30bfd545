// Deliveries. Tested by tests/unit/host/intake_test.cpp.
#include "host/pages/deliveries.h"

#include "host/alarms/states.h"
#include "host/store/event_history.h"
#include "host/store/schema.h"
#include "host/text/controls.h"

namespace host {
namespace {

constexpr const char* kSelect =
    "SELECT alarm, place, alarm_group, pager, since, answer IS NOT NULL, answer, line,"
    " tries FROM "
    "Host_Deliveries ";

// An alarm without a severity is the mildest.
constexpr const char* kInTheirOrder =
    " ORDER BY coalesce((SELECT min(nullif(CAST(severity AS INTEGER), 0)) FROM AlarmLog"
    "  WHERE alarmlogID = Host_Deliveries.alarm), 9), CAST(alarm AS INTEGER), place";

std::vector<Delivery> ReadAll(Statement& statement) {
    std::vector<Delivery> deliveries;
    while (statement.Step()) {
        const bool answered = statement.Number(5) != 0;
        const auto answer = static_cast<int32_t>(statement.Number(6));
        deliveries.push_back({std::string(statement.Text(0)), statement.Number(1),
                              WithoutControls(statement.Text(2)),
                              WithoutControls(statement.Text(3)), statement.Number(4),
                              answered ? std::optional<int32_t>(answer) : std::nullopt,
                              std::string(statement.Text(7)), statement.Number(8)});
    }
    return deliveries;
}

Statement& BindKey(Statement& statement, const Delivery& delivery) {
    return statement.Bind(delivery.alarm).Bind(delivery.group).Bind(delivery.pager);
}

void InsertDelivery(Connection& connection, const Alarm& alarm, int64_t place,
                    const std::string& pager) {
    Statement(connection,
              "INSERT INTO Host_Deliveries (alarm, place, alarm_group, pager, since)"
              " VALUES (?, ?, ?, ?, (SELECT coalesce(max(row_id), 0) FROM Host_History))")
        .Bind(alarm.number)
        .Bind(place)
        .Bind(alarm.group)
        .Bind(pager)
        .Run();
}

// A page that was taken from a line, and that no other gets, ends so.
void EndMovedPage(Connection& connection, const std::string& alarm, int64_t place) {
    std::string group;
    std::string pager;
    {
        Statement statement(connection,
                            "SELECT alarm_group, pager FROM Host_Deliveries AS open"
                            " WHERE alarm = ? AND place = ? AND (SELECT change FROM Host_History"
                            "  WHERE alarm = open.alarm AND alarm_group = open.alarm_group"
                            "  AND pager = open.pager ORDER BY row_id DESC LIMIT 1) = ?");
        if (!statement.Bind(alarm).Bind(place).Bind(std::string_view(kMoved)).Step()) {
            return;
        }
        group = statement.Text(0);
        pager = statement.Text(1);
    }
    WriteHistory(connection, {kRemoved, alarm, group, pager, kStateBeingPaged, "0"});
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

// line: whose; empty: all.
constexpr const char* kOpenOnes = "WHERE answer IS NULL AND (?1 = '' OR line = ?1)";

// One that can't be read doesn't hide the others.
std::vector<Delivery> ReadOpenOneByOne(Connection& connection, const std::string& line,
                                       size_t* unreadable) {
    Statement count(connection, std::string("SELECT count(*) FROM Host_Deliveries ") + kOpenOnes);
    count.Bind(line).Step();
    std::vector<Delivery> deliveries;
    for (int64_t before = 0; before < count.Number(0); ++before) {
        try {
            Statement statement(connection,
                                std::string(kSelect) + kOpenOnes + " LIMIT 1 OFFSET ?2");
            statement.Bind(line).Bind(before);
            for (Delivery& delivery : ReadAll(statement)) {
                deliveries.push_back(std::move(delivery));
            }
        } catch (const RowTooLarge&) {
            if (unreadable != nullptr) {
                ++*unreadable;
            }
        }
    }
    return deliveries;
}

std::vector<Delivery> ReadOpen(Connection& connection, const std::string& line,
                               size_t* unreadable) {
    try {
        Statement statement(connection, std::string(kSelect) + kOpenOnes + kInTheirOrder);
        statement.Bind(line);
        return ReadAll(statement);
    } catch (const RowTooLarge&) {
        return ReadOpenOneByOne(connection, line, unreadable);
    }
}

}  // namespace

void PlanDeliveries(Connection& connection, const Alarm& alarm,
                    const std::vector<std::string>& pagers) {
    WriteTransaction transaction(connection);
    Statement(connection, "DELETE FROM Host_Deliveries WHERE alarm = ?").Bind(alarm.number).Run();
    int64_t place = 0;
    for (const std::string& pager : pagers) {
        InsertDelivery(connection, alarm, place++, pager);
    }
    SetPagerState(connection, alarm.row, StateWith(pagers, alarm));
    transaction.Commit();
}

std::vector<Delivery> DeliveriesOf(Connection& connection, const std::string& alarm) {
    Statement statement(connection, std::string(kSelect) + "WHERE alarm = ? ORDER BY place");
    statement.Bind(alarm);
    return ReadAll(statement);
}

std::vector<Delivery> OpenDeliveries(Connection& connection, size_t* unreadable) {
    return ReadOpen(connection, "", unreadable);
}

std::vector<Delivery> OpenDeliveriesOf(Connection& connection, const std::string& line) {
    return ReadOpen(connection, line, nullptr);
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
    return BindKey(statement, delivery).Bind(delivery.since).Step();
}

void CloseAlarm(Connection& connection, const Alarm& alarm) {
    WriteTransaction transaction(connection);
    if (!WentToSomebody(connection, alarm.number)) {
        SetPagerState(connection, alarm.row, kStateOffLimit);
    }
    transaction.Commit();
}

}  // namespace host
