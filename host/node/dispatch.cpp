// Dispatch. Tested by tests/e2e/run_lines_test.cpp.
#include "host/node/dispatch.h"
#include "host/store/tables/pagers.h"

#include <algorithm>

#include "host/pages/delivery_words.h"
#include "host/pages/page_owner.h"

namespace host {
namespace {

// Whether the pager can have its pages from the line: from the one that it names, or from any that
// can dial for its type, of the node that it names, if it names one.
bool Fits(const SiteLine& line, const PagerRow& pager) {
    if (!pager.port.empty()) {
        return line.name == pager.port;
    }
    const bool is_there = pager.node.empty() || line.node.empty() || line.node == pager.node;
    return is_there && line.CanDialFor(pager.type);
}

bool CanBeRead(Connection& connection, const Delivery& delivery) {
    try {
        FindAlarm(connection, delivery.alarm);
        return true;
    } catch (const RowTooLarge&) {
        return false;
    }
}

}  // namespace

void Dispatch::Run(Connection& connection, const Role& role) {
    size_t unreadable = 0;
    const std::vector<Delivery> deliveries = OpenDeliveries(connection, &unreadable);
    for (size_t number = 1; number <= unreadable; ++number) {
        aside_.Add("open delivery " + std::to_string(number) + " that can't be read",
                   SetAside::kTooLarge);
    }
    if (deliveries.empty()) {
        return;
    }
    loads_.Read(connection);
    for (const Delivery& delivery : deliveries) {
        if (!delivery.line.empty() || delivery.unknown) {
            continue;
        }
        try {
            Give(connection, delivery, role);
        } catch (const RowTooLarge& error) {
            aside_.Add(NameOf(delivery, encoding_), error.what());
        }
    }
}

bool Dispatch::IsDone(Connection& connection) const {
    const std::vector<Delivery> open = OpenDeliveries(connection);
    return std::all_of(open.begin(), open.end(), [&](const Delivery& delivery) {
        return delivery.unknown || aside_.Has(NameOf(delivery, encoding_)) ||
               !CanBeRead(connection, delivery);
    });
}

void Dispatch::Give(Connection& connection, const Delivery& delivery, const Role& role) {
    const std::optional<Alarm> alarm = FindAlarm(connection, delivery.alarm);
    if (const auto answer = AnswerWithoutLine(connection, delivery, alarm)) {
        if (role.leads) {
            Close(connection, delivery, alarm, *answer);
        }
        return;
    }
    const PagerRow pager = FindPagers(connection, delivery.pager).front();
    ServedLine* const line = LineFor(pager);
    if (line == nullptr) {
        if (role.alone && LineOfSite(pager) == nullptr) {
            TellThatNoneHas(delivery.pager);
        }
    } else if (loads_.Of(line->Line().name).ahead < kMostAhead) {
        without_line_.erase(delivery.pager);
        if (!GiveToLine(connection, delivery, line->Line().name)) {
            return;  // another node was faster
        }
        loads_.Give(line->Line().name);
        line->Ring();
    }
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

void Dispatch::Close(Connection& connection, const Delivery& delivery,
                     const std::optional<Alarm>& alarm, int32_t answer) {
    NoteAnswer(connection, delivery, answer);
    TellAnswer(log_, NameOf(delivery, encoding_), answer);
    if (alarm && !NeedsNoPaging(*alarm)) {
        CloseAlarm(connection, *alarm);
    }
}

ServedLine* Dispatch::LineFor(const PagerRow& pager) const {
    ServedLine* best = nullptr;
    for (const std::unique_ptr<ServedLine>& line : lines_.All()) {
        if (Fits(line->Line(), pager) && line->IsServed() &&
            (best == nullptr ||
             IsLessBusy(loads_.Of(line->Line().name), loads_.Of(best->Line().name)))) {
            best = line.get();
        }
    }
    return best;
}

ServedLine* Dispatch::LineOfSite(const PagerRow& pager) const {
    for (const std::unique_ptr<ServedLine>& line : lines_.All()) {
        if (Fits(line->Line(), pager) && line->IsWanted()) {
            return line.get();
        }
    }
    return nullptr;
}

void Dispatch::TellThatNoneHas(const std::string& pager) {
    if (without_line_.insert(pager).second) {
        log_.Error("pager \"" + Decode(pager, encoding_) +
                   "\": no line that can have its pages is in service; they wait");
    }
}

}  // namespace host
