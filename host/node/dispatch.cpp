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
    const Pass pass{role, now, std::exchange(left_, {})};
    loads_.Read(connection);
    if (role.leads) {
        CloseSettled(connection, pass);
    } else if (!role.alone && !HaveRoom()) {
        return;
    }
    std::vector<Waiting> first = FirstOfAll(connection, pass);
    if (first.empty()) {
        return;
    }
    if (role.alone) {
        others_.Forget();
    } else {
        others_.Read(connection, lines_, loads_);
    }
    std::stable_sort(first.begin(), first.end(), [](const Waiting& one, const Waiting& other) {
        return GoesBefore(one.delivery, other.delivery);
    });
    for (const Waiting& waiting : first) {
        LookOrSetAside(connection, waiting, pass);
    }
}

// The next so many: an alarm may be acknowledged, or end, while its pages wait.
void Dispatch::CloseSettled(Connection& connection, const Pass& pass) {
    const std::vector<LookedAt> next =
        LookWhetherSettled(connection, std::exchange(settled_up_to_, {}), kLookedAtInAPass);
    for (const LookedAt& one : next) {
        if (!one.settled && IsLibraryNumber(one.delivery.first)) {
            continue;
        }
        for (const Delivery& delivery : DeliveriesOf(connection, one.delivery.first)) {
            if (delivery.place == one.delivery.second) {
                CloseOrSetAside(connection, delivery, pass);
            }
        }
    }
    if (next.size() == static_cast<size_t>(kLookedAtInAPass)) {
        settled_up_to_ = next.back().delivery;
    }
}

// Of each pager those that its lines have room for. Those that can't be had now are left where they
// are.
std::vector<Dispatch::Waiting> Dispatch::FirstOfAll(Connection& connection, const Pass& pass) {
    std::vector<Waiting> first;
    for (const std::string& pager : PagersThatWait(connection)) {
        try {
            const std::vector<PagerRow> rows = FindPagers(connection, pager);
            if (rows.size() != 1) {
                CloseUnknown(connection, pager, pass);
            } else {
                AddFirst(connection, rows.front(), pass, first);
            }
        } catch (const RowTooLarge& error) {
            SetAsideAll(connection, pager, error.what());
        }
    }
    return first;
}

void Dispatch::AddFirst(Connection& connection, const PagerRow& pager, const Pass& pass,
                        std::vector<Waiting>& first) {
    if (LineFor(pager) == nullptr && pass.role.alone && LineOfSite(pager) == nullptr) {
        TellThatNoneHas(pager);
    }
    if (const int64_t room = RoomFor(pager); room > 0) {
        for (Delivery& delivery : FirstOf(connection, pager.description, room)) {
            first.push_back({std::move(delivery), pager});
        }
    }
}

void Dispatch::SetAsideAll(Connection& connection, const std::string& pager, const char* why) {
    for (const Delivery& delivery : FirstWaiting(connection, pager, kLookedAtInAPass)) {
        aside_.Add(NameOf(delivery, encoding_), why);
    }
}

// Some may turn out to need no line, or to be such that nobody can read their alarm.
std::vector<Delivery> Dispatch::FirstOf(Connection& connection, const std::string& pager,
                                        int64_t count) {
    constexpr int64_t kSpare = 8;
    return FirstWaiting(connection, pager, count + kSpare + static_cast<int64_t>(aside_.Count()));
}

void Dispatch::CloseUnknown(Connection& connection, const std::string& pager, const Pass& pass) {
    for (const Delivery& delivery : FirstWaiting(connection, pager, kLookedAtInAPass)) {
        CloseOrSetAside(connection, delivery, pass);
    }
}

void Dispatch::CloseOrSetAside(Connection& connection, const Delivery& delivery, const Pass& pass) {
    try {
        CloseIfSettled(connection, delivery, pass);
    } catch (const RowTooLarge& error) {
        aside_.Add(NameOf(delivery, encoding_), error.what());
    }
}

void Dispatch::LookOrSetAside(Connection& connection, const Waiting& waiting, const Pass& pass) {
    try {
        Look(connection, waiting, pass);
    } catch (const RowTooLarge& error) {
        aside_.Add(NameOf(waiting.delivery, encoding_), error.what());
    }
}

// Whether any line can be given a page at all.
bool Dispatch::HaveRoom() const {
    return std::any_of(
        lines_.All().begin(), lines_.All().end(), [this](const std::unique_ptr<ServedLine>& line) {
            return line->IsServed() && loads_.Of(line->Line().name).ahead < kMostAhead;
        });
}

int64_t Dispatch::RoomFor(const PagerRow& pager) const {
    int64_t room = 0;
    for (const std::unique_ptr<ServedLine>& line : lines_.All()) {
        if (line->Line().Fits(pager) && line->IsServed()) {
            room += std::max(0, kMostAhead - loads_.Of(line->Line().name).ahead);
        }
    }
    return room;
}

bool Dispatch::IsDone(Connection& connection) const {
    const std::vector<Delivery> open = OpenDeliveries(connection);
    return std::all_of(open.begin(), open.end(), [&](const Delivery& delivery) {
        return delivery.unknown || aside_.Has(NameOf(delivery, encoding_)) ||
               !CanBeRead(connection, delivery);
    });
}

void Dispatch::Look(Connection& connection, const Waiting& waiting, const Pass& pass) {
    ServedLine* const line = LineFor(waiting.pager);
    if (line != nullptr && loads_.Of(line->Line().name).ahead < kMostAhead &&
        !CloseIfSettled(connection, waiting.delivery, pass)) {
        Give(connection, waiting.delivery, waiting.pager, *line, pass);
    }
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
    const DeliveryKey page{delivery.alarm, delivery.place};
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
