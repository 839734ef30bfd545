// The reckoning. Tested by tests/unit/host/reckoning_test.cpp.
#include "host/node/reckoning.h"

#include <algorithm>

#include "host/node/reckoned_site.h"
#include "host/store/tables/alarm_log.h"
#include "host/store/tables/deliveries.h"
#include "host/store/tables/events.h"

namespace host {
namespace {

constexpr std::time_t kLongestPage = 445;      // s, on the line
constexpr std::time_t kFirstFailure = 5 * 60;  // s; the pause behind it
constexpr std::time_t kNoProgress =
    15 * 60;  // s; a stuck line has been ended and made anew by then
constexpr std::time_t kUnknownDelay = 45 * 60;  // s; of a pager that isn't there any more

std::string Minutes(std::time_t seconds) {
    return std::to_string(seconds / 60) + " minutes";
}

class Reckoner {
 public:
    Reckoner(Connection& connection, Encoding encoding, std::time_t now)
        : connection_(connection),
          encoding_(encoding),
          now_(now),
          site_(ReadReckonedSite(connection)) {
        ReadLoads(connection, site_);
    }

    std::vector<Amiss> Reckon() {
        LookAtAlarms();
        LookAtPagesOwed();
        LookAtPagesGiven();
        return std::move(found_);
    }

 private:
    void Find(std::string_view alarm, std::string_view pager, std::string what) {
        found_.push_back({Decode(alarm, encoding_), Decode(pager, encoding_), std::move(what)});
    }
    std::string Named(const ReckonedLine& line) const {
        return "\"" + Decode(line.name, encoding_) + "\"";
    }

    void FindAlarms(const std::vector<std::string>& alarms, const char* what) {
        for (const std::string& alarm : alarms) {
            Find(alarm, "", what);
        }
    }

    void LookAtAlarms() {
        FindAlarms(AlarmsNotTakenUp(connection_), "it hasn't been taken up");
        FindAlarms(AlarmsPagedWithoutPages(connection_),
                   "it counts as being paged, and no page of it is pending");
        FindAlarms(AlarmsOverWithPages(connection_),
                   "it counts as over, and a page of it is pending, which would be dropped");
    }

    void LookAtPagesOwed() {
        for (const Delivery& owed : OwedDeliveries(connection_)) {
            const std::string why = WhyIsItOwed(owed.pager, owed.line);
            if (!why.empty()) {
                Find(owed.alarm, owed.pager, why);
            }
        }
    }

    // Empty: it waits as it should.
    std::string WhyIsItOwed(const std::string& pager, const std::string& given_to) const {
        const auto known = site_.pagers.find(pager);
        if (known == site_.pagers.end() || known->second.rows != 1) {
            return "the page is still owed, though the pager can't be paged";
        }
        for (const ReckonedLine* line : site_.LinesFor(pager)) {
            if (line->name == given_to ? line->is_idle : line->untried == 0) {
                return "no line has taken the page, though " + Named(*line) +
                       " has nothing else to do";
            }
        }
        return {};
    }

    void LookAtPagesGiven() {
        for (const EventOnItsWay& given : EventsOnTheirWay(connection_)) {
            const Page page{given.pager, site_.Find(given.line),
                            given.changed + (given.was_sent ? PauseOf(given.pager) : 0),
                            given.was_moved};
            const std::string why = WhyIsItPending(page);
            if (!why.empty()) {
                Find(given.alarm, given.pager, why);
            }
        }
    }

    struct Page {
        std::string pager;
        const ReckonedLine* line;  // null: it belongs to none of the site
        std::time_t due;           // at the latest
        bool was_moved;
    };

    // Between two tries, at most.
    std::time_t PauseOf(const std::string& pager) const {
        const auto known = site_.pagers.find(pager);
        return std::max(kFirstFailure,
                        known == site_.pagers.end() ? kUnknownDelay : known->second.delay);
    }

    // Empty: it waits as it should.
    std::string WhyIsItPending(const Page& page) const {
        if (page.line == nullptr || page.line->is_sick) {
            return WhyIsItThere(page);
        }
        if (!page.line->is_well || now_ <= page.due) {
            return {};
        }
        const std::time_t late = now_ - page.due;
        const std::time_t quiet = now_ - page.line->last_sending;
        if (late > kNoProgress && quiet > kNoProgress) {
            return Named(*page.line) + " has sent nothing, though the page has been due for " +
                   Minutes(late);
        }
        if (late > kNoProgress + page.line->pending * kLongestPage) {
            return "others went before it, though the page has been due for " + Minutes(late);
        }
        return {};
    }

    // A page that was taken from a line before may have used up what it may be tried elsewhere.
    std::string WhyIsItThere(const Page& page) const {
        if (site_.LinesFor(page.pager).empty() || page.was_moved ||
            (page.line != nullptr && site_.IsBound(page.pager))) {
            return {};
        }
        return page.line == nullptr ? "the page belongs to no line of the site"
                                    : "the page waits for " + Named(*page.line) +
                                          ", which is sick, though another line could have it";
    }

    Connection& connection_;
    const Encoding encoding_;
    const std::time_t now_;
    ReckonedSite site_;
    std::vector<Amiss> found_;
};

}  // namespace

std::vector<Amiss> Reckon(Connection& connection, Encoding encoding, std::time_t now) {
    return Reckoner(connection, encoding, now).Reckon();
}

}  // namespace host
