// The reckoning. Tested by tests/unit/host/reckoning_test.cpp.
#include "host/node/reckoning.h"

#include <algorithm>

#include "host/node/reckoned_site.h"

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
          site_(ReadReckonedSite(connection)) {}

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

    void EachAlarm(const char* condition, const char* what) {
        Statement alarms(connection_, std::string("SELECT alarmlogID FROM AlarmLog AS alarm"
                                                  " WHERE alarmack IN ('', '0') AND ") +
                                          condition + " ORDER BY row_id");
        while (alarms.Step()) {
            Find(alarms.Text(0), "", what);
        }
    }

    void LookAtAlarms() {
        EachAlarm("pagerstate IN ('', '0')", "it hasn't been taken up");
        EachAlarm(
            "pagerstate = '2'"
            " AND NOT EXISTS (SELECT 1 FROM AlarmFwd_PagerEvents WHERE AlmLogID = alarmlogID"
            "  AND PagerState = '2')"
            " AND NOT EXISTS (SELECT 1 FROM Host_Deliveries WHERE alarm.alarmlogID ="
            "  Host_Deliveries.alarm AND answer IS NULL)",
            "it counts as being paged, and no page of it is pending");
        // By the pages: there are many alarms that are over.
        EachAlarm(
            "+pagerstate IN ('3', '4') AND alarmlogID IN"
            " (SELECT AlmLogID FROM AlarmFwd_PagerEvents WHERE PagerState = '2')",
            "it counts as over, and a page of it is pending, which would be dropped");
    }

    void LookAtPagesOwed() {
        Statement owed(connection_,
                       "SELECT Host_Deliveries.alarm, pager, line FROM Host_Deliveries"
                       " JOIN AlarmLog ON alarmlogID = Host_Deliveries.alarm"
                       " WHERE answer IS NULL AND alarmack IN ('', '0') AND pagerstate <> '1'");
        while (owed.Step()) {
            const std::string why =
                WhyIsItOwed(std::string(owed.Text(1)), std::string(owed.Text(2)));
            if (!why.empty()) {
                Find(owed.Text(0), owed.Text(1), why);
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
        Statement given(
            connection_,
            "SELECT AlmLogID, PagerDescr, event.line,"
            " coalesce((SELECT max(at) FROM Host_History AS history WHERE history.alarm = AlmLogID"
            "  AND history.pager = PagerDescr AND change IN ('written', 'changed')), 0),"
            " EXISTS (SELECT 1 FROM Host_Sends AS sent WHERE sent.alarm = AlmLogID"
            "  AND sent.pager = PagerDescr AND sent.port = event.line),"
            " coalesce((SELECT max(tries) FROM Host_Deliveries AS owed WHERE owed.alarm = AlmLogID"
            "  AND owed.pager = PagerDescr), 0)"
            " FROM AlarmFwd_PagerEvents AS event JOIN AlarmLog AS alarm ON alarmlogID = AlmLogID"
            " WHERE event.PagerState = '2' AND alarm.pagerstate = '2'"
            " AND alarmack IN ('', '0')");
        while (given.Step()) {
            Page page{std::string(given.Text(1)), site_.Find(std::string(given.Text(2))), 0,
                      given.Number(5) > 0};
            page.due = static_cast<std::time_t>(given.Number(3)) +
                       (given.Number(4) != 0 ? PauseOf(page.pager) : 0);
            const std::string why = WhyIsItPending(page);
            if (!why.empty()) {
                Find(given.Text(0), given.Text(1), why);
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
    const ReckonedSite site_;
    std::vector<Amiss> found_;
};

}  // namespace

std::vector<Amiss> Reckon(Connection& connection, Encoding encoding, std::time_t now) {
    return Reckoner(connection, encoding, now).Reckon();
}

}  // namespace host
