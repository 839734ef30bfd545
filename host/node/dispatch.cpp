// Dispatch. Tested by tests/unit/host/dispatch_test.cpp and tests/e2e/run_lines_test.cpp.
#include "host/node/dispatch.h"
#include "host/store/tables/pagers.h"

#include <algorithm>
#include <utility>

#include "host/pages/delivery_words.h"
#include "host/pages/page_owner.h"
#include "host/process/clock_jumps.h"

namespace host {
namespace {

bool CanBeRead(Connection& connection, const Delivery& delivery) {
    try {
        FindAlarm(connection, delivery.alarm);
        return true;
    } catch (const RowTooLarge&) {
        return false;
    }
}

}  // namespace

void Dispatch::Run(Connection& connection, const Role& role, std::time_t now) {
    Pass pass{role, now, std::exchange(left_, {}), {}, {}};
    loads_.Read(connection);
    if (!role.leads && !role.alone && !HaveRoom()) {
        return;
    }
    size_t unreadable = 0;
    const std::vector<Delivery> deliveries = OpenDeliveries(connection, &unreadable);
    for (size_t number = 1; number <= unreadable; ++number) {
        aside_.Add("open delivery " + std::to_string(number) + " that can't be read",
                   SetAside::kTooLarge);
    }
    if (deliveries.empty()) {
        return;
    }
    if (role.alone) {
        others_.Forget();
    } else {
        others_.Read(connection, lines_, loads_);
    }
    if (role.leads) {
        pass.settled = SettledDeliveries(connection);
    }
    for (const Delivery& delivery : deliveries) {
        if (!delivery.line.empty() || delivery.unknown) {
            continue;
        }
        try {
            Look(connection, delivery, pass);
        } catch (const RowTooLarge& error) {
            aside_.Add(NameOf(delivery, encoding_), error.what());
        }
    }
}

// Whether any line can be given a page at all.
bool Dispatch::HaveRoom() const {
    return std::any_of(
        lines_.All().begin(), lines_.All().end(), [this](const std::unique_ptr<ServedLine>& line) {
            return line->IsServed() && loads_.Of(line->Line().name).ahead < kMostAhead;
        });
}

bool Dispatch::IsDone(Connection& connection) const {
    const std::vector<Delivery> open = OpenDeliveries(connection);
    return std::all_of(open.begin(), open.end(), [&](const Delivery& delivery) {
        return delivery.unknown || aside_.Has(NameOf(delivery, encoding_)) ||
               !CanBeRead(connection, delivery);
    });
}

// Thousands may wait: what one asks the tables for each is asked only where something is done.
void Dispatch::Look(Connection& connection, const Delivery& delivery, Pass& pass) {
    auto known = pass.pagers.find(delivery.pager);
    if (known == pass.pagers.end()) {
        known = pass.pagers.emplace(delivery.pager, FindPagers(connection, delivery.pager)).first;
    }
    const std::vector<PagerRow>& pagers = known->second;
    const bool is_known = pagers.size() == 1;
    if ((!is_known || MayNeedNoLine(delivery, pass)) &&
        (CloseIfSettled(connection, delivery, pass) || !is_known)) {
        return;
    }
    const PagerRow& pager = pagers.front();
    ServedLine* const line = LineFor(pager);
    if (line == nullptr) {
        if (pass.role.alone && LineOfSite(pager) == nullptr) {
            TellThatNoneHas(pager);
        }
    } else if (loads_.Of(line->Line().name).ahead < kMostAhead &&
               !CloseIfSettled(connection, delivery, pass)) {
        Give(connection, delivery, pager, *line, pass);
    }
}

bool Dispatch::MayNeedNoLine(const Delivery& delivery, const Pass& pass) {
    return !IsLibraryNumber(delivery.alarm) ||
           pass.settled.count({delivery.alarm, delivery.place}) != 0;
}

// Whether it needs no line. Closed by who leads.
bool Dispatch::CloseIfSettled(Connection& connection, const Delivery& delivery, const Pass& pass) {
    const std::optional<Alarm> alarm = FindAlarm(connection, delivery.alarm);
    const std::optional<int32_t> answer = AnswerWithoutLine(connection, delivery, alarm);
    if (answer && pass.role.leads) {
        NoteAnswer(connection, delivery, *answer);
        TellAnswer(log_, NameOf(delivery, encoding_), *answer);
        if (alarm && !NeedsNoPaging(*alarm)) {
            CloseAlarm(connection, *alarm);
        }
    }
    return answer.has_value();
}

void Dispatch::Give(Connection& connection, const Delivery& delivery, const PagerRow& pager,
                    ServedLine& line, const Pass& pass) {
    const std::string& name = line.Line().name;
    without_line_.erase(pager.description);
    if (loads_.Of(name).ahead > 0 && IsLeft(delivery, pager, pass)) {
        loads_.Give(name);                                // its place is kept
    } else if (GiveToLine(connection, delivery, name)) {  // else another node was faster
        loads_.Give(name);
        line.Ring();
    }
}

// A row of theirs may be out of date, so this ends.
bool Dispatch::IsLeft(const Delivery& delivery, const PagerRow& pager, const Pass& pass) {
    if (!others_.AnyIdleFor(pager)) {
        return false;
    }
    const Page page{delivery.alarm, delivery.place};
    const auto before = pass.left.find(page);
    const std::time_t since = before == pass.left.end() ? pass.now : before->second;
    if (HasCome(since + kLeftFor, pass.now, kLeftFor)) {
        return false;
    }
    left_.emplace(page, since);
    return true;
}

std::optional<int32_t> Dispatch::AnswerWithoutLine(Connection& connection, const Delivery& delivery,
                                                   const std::optional<Alarm>& alarm) const {
    if (!alarm || !IsLibraryNumber(alarm->number)) {
        return kAlarmUnknown;
    }
    if (WasEverQueued(connection, delivery)) {
        return kWasQueued;
    }
    if (NeedsNoPaging(*alarm)) {
        return kWasAcknowledged;
    }
    return FindPagers(connection, delivery.pager).size() == 1
               ? std::nullopt
               : std::optional<int32_t>(kPagerUnknown);
}

ServedLine* Dispatch::LineFor(const PagerRow& pager) const {
    ServedLine* best = nullptr;
    for (const std::unique_ptr<ServedLine>& line : lines_.All()) {
        if (line->Line().Fits(pager) && line->IsServed() &&
            (best == nullptr ||
             IsLessBusy(loads_.Of(line->Line().name), loads_.Of(best->Line().name)))) {
            best = line.get();
        }
    }
    return best;
}

ServedLine* Dispatch::LineOfSite(const PagerRow& pager) const {
    for (const std::unique_ptr<ServedLine>& line : lines_.All()) {
        if (line->Line().Fits(pager) && line->IsWanted()) {
            return line.get();
        }
    }
    return nullptr;
}

void Dispatch::TellThatNoneHas(const PagerRow& pager) {
    if (without_line_.insert(pager.description).second) {
        log_.Error("pager \"" + Decode(pager.description, encoding_) +
                   "\": no line that can have its pages is in service; they wait");
    }
}

}  // namespace host
