// Stands in for libPagerFwd.so in the tests of the command line: shows what it is called with, and
// gives the result that the pager's number says.
#include <pagerfwd/pagerfwd.h>
#include <pagerfwd/table_access.h>
#include <pagerfwd/text_helpers.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

// How many rows the host's table store has for a time model: the store is called from here.
int32_t CountTimeModels(const char* database, const char* description) {
    DBAsciiHandle handle = nullptr;
    DBAsciiRowSet rows = nullptr;
    if (DBAsciiAccessOpen(database, 'n', &handle) != 0) {
        return -1;
    }
    DBAsciiAccessTableOpen(handle, "AlarmFwd_TMSetting");
    const int32_t count =
        DBAsciiAccessGetAllEntriesByCondition(handle, "AlarmFwd_TMSetting", "description", &rows, 0,
                                              description, 'r', nullptr, 'n', 0, 0);
    if (count > 0) {
        DBAsciiAccessFree(rows);
    }
    DBAsciiAccessClose(handle);
    return count;
}

}  // namespace

extern "C" {

int32_t AlarmFwdPager(FwdSpecialInfoStr* /*info*/, char* /*serverName*/, char* /*extra*/,
                      char** /*pagerNames*/, int32_t /*pagerCount*/) {
    return -1;
}
void StartAlarmFwdPager(FwdSpecialInfoStr* /*info*/) {}
void StopAlarmFwdPager(void) {
    std::printf("[stopped]");
}

int32_t TestPager(FwdSpecialInfoStr* info, char* description, char* pagerNumber, char* comPort,
                  char* pagerType, char* timeModel) {
    const unsigned char* lead = reinterpret_cast<const unsigned char*>("\x93\xFA");
    std::printf("[%s|%s|%s|%s|%s|%s|%u|%s]", info->dbName, description, pagerNumber, comPort,
                pagerType, timeModel, static_cast<unsigned>(_mbclen(lead)),
                std::getenv("NX_PAGEPROT") == nullptr ? "quiet" : "traced");
    return std::atoi(pagerNumber);
}

// "open" is open, anything else that exists is barred.
int32_t NXIsInTimeModel(const char* databaseName, const char* timeModelDescription) {
    if (CountTimeModels(databaseName, timeModelDescription) <= 0) {
        return -1;
    }
    return std::strcmp(timeModelDescription, "open") == 0 ? 0 : 1;
}

}  // extern "C"
