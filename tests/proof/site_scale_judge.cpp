// The judge of the site of many nodes. Tested by site_scale_judge_test.cpp.
#include "tests/proof/site_scale_judge.h"

#include <algorithm>

#include "tests/proof/site_scale_scenario.h"

namespace proof::site_scale {
namespace {

// The history is written in whole seconds.
constexpr double kLeeway = 1;

class Judgement {
 public:
    explicit Judgement(const Books& books) : books_(books) {}

    Totals Pass() {
        for (const Reception& reception : books_.receptions) {
            OfReception(reception);
        }
        for (const auto& [number, alarm] : books_.alarms) {
            OfAlarm(number, alarm);
        }
        for (int com = 1; com <= kLines; ++com) {
            Require(totals_.pages_of_line[LineOnPort(com)] > 0, LineOnPort(com) + " was idle");
        }
        std::sort(totals_.waits.begin(), totals_.waits.end());
        return totals_;
    }

 private:
    void OfReception(const Reception& reception) {
        ++totals_.pages_of_line[reception.line];
        const auto alarm = books_.alarms.find(reception.number);
        if (alarm == books_.alarms.end()) {
            totals_.complaints.push_back("received by " + reception.recipient + " at " +
                                         std::to_string(reception.at) + ", and never raised");
            return;
        }
        const std::string name = TextOf(reception.number);
        Require(reception.recipient == PagerOf(alarm->second.group).number,
                name + " went to " + reception.recipient);
        Require(HadIt(reception), name + " was sent by " + reception.line +
                                      ", whose page it was not, at " +
                                      std::to_string(reception.at));
        received_[reception.number].push_back(reception.at);
    }

    bool HadIt(const Reception& reception) const {
        const auto page = books_.pages.find(reception.number);
        return page != books_.pages.end() &&
               std::any_of(page->second.holdings.begin(), page->second.holdings.end(),
                           [&](const Holding& holding) {
                               return holding.line == reception.line &&
                                      reception.at >= static_cast<double>(holding.from) &&
                                      (holding.until == 0 ||
                                       reception.at < static_cast<double>(holding.until) + kLeeway);
                           });
    }

    void OfAlarm(int number, const Alarm& alarm) {
        const auto received = received_.find(number);
        const auto page = books_.pages.find(number);
        if (received == received_.end()) {
            totals_.complaints.push_back(TextOf(number) + " is lost: nobody received it");
            return;
        }
        Require(page != books_.pages.end() && page->second.done,
                TextOf(number) + " was received, and the site doesn't know");
        const int more = static_cast<int>(received->second.size()) - 1;
        const int named = page != books_.pages.end() ? page->second.named : 0;
        Require(more <= named, TextOf(number) + " was received " + std::to_string(more + 1) +
                                   " times, and named " + std::to_string(named) + " times");
        totals_.twice += more;
        totals_.waits.push_back(
            *std::min_element(received->second.begin(), received->second.end()) -
            static_cast<double>(alarm.raised));
    }

    void Require(bool holds, const std::string& complaint) {
        if (!holds) {
            totals_.complaints.push_back(complaint);
        }
    }

    const Books& books_;
    std::map<int, std::vector<double>> received_;  // when, by the alarm's number
    Totals totals_;
};

}  // namespace

Totals Judge(const Books& books) {
    return Judgement(books).Pass();
}

}  // namespace proof::site_scale
