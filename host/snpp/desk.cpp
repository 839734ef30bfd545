// The site, as SNPP asks for it. Tested by tests/unit/host/snpp_dialogue_test.cpp.
#include "host/snpp/desk.h"

#include <algorithm>

#include "host/alarms/raising.h"
#include "host/pages/history.h"
#include "host/pages/page_words.h"
#include "host/pages/routes.h"
#include "host/site/site_tables.h"
#include "host/store/pool.h"
#include "host/store/tables/pagers.h"
#include "host/text/nearest.h"
#include "host/text/printable.h"
#include "host/web/token.h"

namespace host {
namespace {

constexpr const char* kSource = "snpp ";
constexpr const char* kEverything = "*";

// As the tables have it.
std::string CellOf(const std::string& text, Encoding encoding) {
    return MendEncoded(text, encoding);
}

bool IsPager(Connection& connection, const std::string& cell) {
    return FindPagers(connection, cell).size() == 1;
}

// A route for all that there is makes no name a group: a mistyped pager would page its pagers.
bool IsGroup(const std::vector<StoredRoute>& routes, const std::string& group) {
    return std::any_of(routes.begin(), routes.end(), [&group](const StoredRoute& route) {
        return route.groups != kEverything && !route.pagers.empty() &&
               FitsGroup(route.groups, group);
    });
}

// Whom a message goes to, and as what.
class Addressed {
 public:
    Addressed(Connection& connection, const SnppMessage& message, const char* severity)
        : encoding_(EncodingOf(connection)), routes_(ReadRoutes(connection, encoding_)) {
        for (const std::string& recipient : message.to) {
            const std::string cell = CellOf(recipient, encoding_);
            if (IsPager(connection, cell)) {
                Add(cell);
            } else {
                AddGroup(Decode(cell, encoding_), severity);
            }
        }
    }

    const std::string& Group() const { return group_; }
    const std::vector<std::string>& Pagers() const { return pagers_; }

 private:
    void Add(const std::string& pager) {
        if (std::find(pagers_.begin(), pagers_.end(), pager) == pagers_.end()) {
            pagers_.push_back(pager);
        }
    }
    void AddGroup(const std::string& group, const char* severity) {
        group_ = group_ == kSnppGroup ? group : group_;
        for (const std::string& pager : PagersFor(routes_, group, severity)) {
            Add(pager);
        }
    }

    const Encoding encoding_;
    const std::vector<StoredRoute> routes_;
    std::string group_ = kSnppGroup;
    std::vector<std::string> pagers_;
};

// Digits alone, since clients read it as a number.
std::string NewPass() {
    constexpr size_t kDigits = 12;
    std::string pass = RandomDigits(kDigits);
    for (char& digit : pass) {
        digit = digit > '9' ? static_cast<char>(digit - 'a' + '0') : digit;
    }
    return pass;
}

SnppStatus::Kind KindOf(const PageStory& page) {
    const bool sent = page.reached == Reached::kSent || page.reached == Reached::kDialled;
    switch (page.end) {
        case PageEnd::kPending:
            return SnppStatus::Kind::kPending;
        case PageEnd::kAcknowledged:
            return SnppStatus::Kind::kRead;
        case PageEnd::kDone:
            return page.reached == Reached::kOutsideHours ? SnppStatus::Kind::kExpired
                                                          : SnppStatus::Kind::kDelivered;
        case PageEnd::kOffLimit:
        case PageEnd::kResolved:
        case PageEnd::kDropped:
        case PageEnd::kByHand:
            break;
    }
    return sent ? SnppStatus::Kind::kDelivered : SnppStatus::Kind::kExpired;
}

// Of all its pages: as long as one is pending it is, and if one is delivered it is. Without any,
// none is at a line yet.
SnppStatus StatusOfAll(Connection& connection, const Alarm& alarm) {
    const Encoding encoding = EncodingOf(connection);
    const std::vector<PageStory> pages = PagesOf(connection, alarm.number);
    if (pages.empty()) {
        return {SnppStatus::Kind::kPending, alarm.raised, StateOf(alarm)};
    }
    SnppStatus status{SnppStatus::Kind::kExpired, alarm.raised, ""};
    for (const PageStory& page : pages) {
        status.kind = std::min(status.kind, KindOf(page));
        status.at = std::max(status.at, std::max(page.queued, page.ended));
        status.words += (status.words.empty() ? "" : "; ") +
                        Printable(Decode(page.pager, encoding)) + ": " + StateOf(page);
    }
    return status;
}

}  // namespace

std::optional<std::string> SnppDesk::NameOf(const std::string& token) const {
    Lease lease(database_);
    const std::optional<Token> found = TokenFor(lease.Database(), token, std::time(nullptr));
    return found && May(*found, kMayRaise) ? std::optional<std::string>(found->name) : std::nullopt;
}

bool SnppDesk::Knows(const std::string& recipient) const {
    Lease lease(database_);
    Connection& connection = lease.Database();
    const Encoding encoding = EncodingOf(connection);
    const std::string cell = CellOf(recipient, encoding);
    return !cell.empty() && (IsPager(connection, cell) ||
                             IsGroup(ReadRoutes(connection, encoding), Decode(cell, encoding)));
}

SnppTag SnppDesk::Send(const SnppMessage& message) const {
    Lease lease(database_);
    Connection& connection = lease.Database();
    const Encoding encoding = EncodingOf(connection);
    const auto read = [encoding](const std::string& text) {
        return Decode(CellOf(text, encoding), encoding);
    };
    NewAlarm alarm =
        Checked({read(message.text), kSnppGroup, message.severity, read(message.from)}, encoding);
    const SnppTag tag{"", NewPass()};
    alarm.source = kSource + tag.pass;
    WriteTransaction transaction(connection);
    const Addressed addressed(connection, message, alarm.severity.c_str());
    if (addressed.Pagers().empty()) {
        throw BadField("to", "no route leads to a pager at this level");
    }
    alarm.group = EncodeNearest(addressed.Group(), encoding);
    const std::string number = RaiseTo(connection, alarm, addressed.Pagers(), std::time(nullptr));
    transaction.Commit();
    return {number, tag.pass};
}

std::optional<SnppStatus> SnppDesk::StatusOf(const SnppTag& tag) const {
    Lease lease(database_);
    const std::optional<Alarm> alarm = FindAlarm(lease.Database(), tag.number);
    return alarm && alarm->source == kSource + tag.pass
               ? std::optional<SnppStatus>(StatusOfAll(lease.Database(), *alarm))
               : std::nullopt;
}

}  // namespace host
