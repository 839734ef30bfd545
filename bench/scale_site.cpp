#include "bench/scale_site.h"

#include "host/store/connection.h"
#include "host/store/schema.h"

namespace bench {
namespace {

constexpr const char* kPagerRow =
    "INSERT INTO AlarmFwd_PagerSetting (description, owner, comport, pgtype, pgnumber, numretries,"
    " retrydelay, timemodel) VALUES ('duty phone', 'Anna', 'COM 1', '4', '5550111', '5', '45',"
    " 'always')";
constexpr const char* kAlarmRow =
    "INSERT INTO AlarmLog (alarmlogID, alarmName, details, pagerstate, server, severity, timestamp)"
    " VALUES (?, 'Pressure high', 'Boiler 2: the pressure is 9.3 bar, the limit is 9.0 bar', '2',"
    " 'PLANT-SRV-2', '2', '978948000')";
constexpr const char* kEventRow =
    "INSERT INTO AlarmFwd_PagerEvents (AlmLogID, AlmGroup, PagerDescr, PagerState, PagerRetries,"
    " Severity, ServerN) VALUES (?, 'operators/003', 'duty phone', '2', '0', '2', 'PLANT-SRV-2')";

void InsertNumbered(host::Connection& connection, const char* row, int32_t count) {
    for (int32_t number = 1; number <= count; ++number) {
        const std::string text = std::to_string(number);
        host::Statement(connection, row).Bind(text).Run();
    }
}

}  // namespace

void MakeSite(const std::string& database, int32_t pages) {
    host::Connection connection(database, host::Connection::Mode::kCreate);
    host::CreateTables(connection);
    host::WriteTransaction transaction(connection);
    connection.Execute(kPagerRow);
    InsertNumbered(connection, kAlarmRow, pages + kFreshAlarms);
    InsertNumbered(connection, kEventRow, pages);
    transaction.Commit();
}

}  // namespace bench
