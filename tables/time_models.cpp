// The table of time models. Tested by tests/unit/tables/time_models_test.cpp.
#include "tables/time_models.h"

#include <pagerfwd/pagerfwd.h>

#include <memory>

#include "linux/CTime.h"
#include "linux/out_of_memory.h"
#include "tables/table_names.h"
#include "tables/table_session.h"

namespace {

constexpr char kDescription[] = "description";
constexpr int kColumns = 7 * 24 + 1;

static_assert(sizeof(TimeModel) == kColumns + 1);

constexpr int32_t kAllowed = 0;
constexpr int32_t kBarred = 1;
constexpr int32_t kNoAnswer = -1;

// From 1 (Sunday) ... 7 (Saturday) to 0 (Monday) ... 6 (Sunday).
int ModelDay(int dayOfWeek) {
    return (dayOfWeek + 5) % 7;
}

int32_t AskTimeModel(const char* databaseName, const char* description) {
    CDB_TimeModels timeModels(databaseName);
    const std::unique_ptr<TimeModel> model(timeModels.FindTimeModel(description));
    if (model == nullptr) {
        return kNoAnswer;
    }
    const CTime now = CTime::GetCurrentTime();
    const bool allowed =
        CDB_TimeModels::IsHourSet(model.get(), ModelDay(now.GetDayOfWeek()), now.GetHour());
    return allowed ? kAllowed : kBarred;
}

}  // namespace

CDB_TimeModels::CDB_TimeModels(const char* databaseName)
    : CDB_Table(databaseName, kTimeModelsTable) {}

TimeModel* CDB_TimeModels::FindTimeModel(const char* description) {
    DatabaseSession session(Database());
    if (!session.OpenTable(Table())) {
        return nullptr;
    }
    const RowSet rows(session, kDescription, description);
    if (rows.IsEmpty()) {
        return nullptr;
    }
    auto* const model = new TimeModel();
    for (int i = 0; i < kColumns; ++i) {
        model->cells[i] = TextOrEmpty(rows.Row(0)[i])[0];
    }
    return model;
}

bool CDB_TimeModels::IsHourSet(const TimeModel* model, int day, int hour) {
    return model->cells[day * 24 + hour] == '1';
}

extern "C" [[gnu::visibility("default")]] int32_t NXIsInTimeModel(
    const char* databaseName, const char* timeModelDescription) {
    if (databaseName == nullptr || timeModelDescription == nullptr) {
        return kNoAnswer;
    }
    int32_t answer = kNoAnswer;
    // The service may be written in C: no exception gets there.
    MemorySufficesFor([&] { answer = AskTimeModel(databaseName, timeModelDescription); });
    return answer;
}
