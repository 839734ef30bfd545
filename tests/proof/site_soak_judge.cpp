// The judge of the soak's site. Tested by site_soak_judge_test.cpp.
#include "tests/proof/site_soak_judge.h"

#include <algorithm>
#include <utility>

#include "tests/proof/site_soak_scenario.h"

namespace proof::site_soak {
namespace {

constexpr int kFirstSms = 4;      // this pager type and the next confirm a delivery
constexpr int kFirstUnheard = 3;  // NTT: all pagers have one number
constexpr double kLeeway = 3;     // seconds: a record is written in whole ones
constexpr double kLongestPage = 90;

std::string Recipient(const soak::Pager& pager) {
    return pager.number.substr(pager.number.find('@') + 1);
}

bool GotThrough(const Sending& sending) {
    return sending.outcome == "sent" || sending.outcome == "dialled";
}

class Judgement {
 public:
    explicit Judgement(const Books& books) : books_(books), taken_(books.calls.size()) {
        for (const soak::Pager& pager : SitePagers()) {
            pagers_.emplace(pager.name, pager);
        }
    }

    Totals Pass() {
        for (const Sending& sending : books_.sendings) {
            OfSending(sending);
        }
        for (size_t call = 0; call < books_.calls.size(); ++call) {
            if (!taken_[call] && !books_.calls[call].received.empty()) {
                OfUnrecorded(books_.calls[call]);
            }
        }
        for (const auto& [alarm, group] : books_.groups) {
            const size_t first = std::stoul(group.substr(1));
            for (const size_t number : {first, first + kGroups}) {
                OfPage(alarm, SitePagers().at(number));
            }
        }
        return std::move(totals_);
    }

 private:
    // What was sent was received in a call of its own, and what was not, was not.
    void OfSending(const Sending& sending) {
        const std::string name = "alarm " + sending.alarm + " to " + sending.pager;
        const auto pager = pagers_.find(sending.pager);
        if (pager == pagers_.end()) {
            totals_.complaints.push_back(name + " is nobody's");
            return;
        }
        Page& page = pages_[{sending.alarm, sending.pager}];
        ++page.tries;
        if (!GotThrough(sending)) {
            ++totals_.failed;
            Require(!sending.reason.empty(), name + " failed without a reason");
            return;
        }
        ++totals_.sent;
        ++page.sent;
        Require(TakeCall(sending, pager->second),
                name + " was sent at " + std::to_string(sending.to) + ", and nobody received it");
    }

    bool TakeCall(const Sending& sending, const soak::Pager& pager) {
        for (size_t number = 0; number < books_.calls.size(); ++number) {
            const Call& call = books_.calls[number];
            const bool fits = !taken_[number] && call.line == sending.line &&
                              call.from >= static_cast<double>(sending.from) - kLeeway &&
                              call.from <= static_cast<double>(sending.to) + kLeeway;
            if (fits && (pager.type == kFirstUnheard || Has(call, Recipient(pager)))) {
                return taken_[number] = true;
            }
        }
        return false;
    }
    static bool Has(const Call& call, const std::string& recipient) {
        return std::find(call.received.begin(), call.received.end(), recipient) !=
               call.received.end();
    }

    // Only where the process that sent it was killed before it could write it down.
    void OfUnrecorded(const Call& call) {
        const bool was_killed =
            std::any_of(books_.kills.begin(), books_.kills.end(), [&](const auto& kill) {
                const auto at = static_cast<double>(kill.second);
                return kill.first == call.line && at >= call.from - kLeeway &&
                       at <= call.to + kLongestPage;
            });
        const std::string name = "a page to " + call.received.front() + " by " + call.line +
                                 " at " + std::to_string(static_cast<long>(call.from));
        if (was_killed) {
            totals_.doubles.push_back(name + ": its line was killed before it was recorded");
        } else {
            totals_.complaints.push_back(name + " was received, and nobody has sent it");
        }
    }

    void OfPage(const std::string& alarm, const soak::Pager& pager) {
        ++totals_.pages;
        const std::string name = "alarm " + alarm + " to " + pager.name;
        const auto found = books_.ends.find({alarm, pager.name});
        const std::string end = found == books_.ends.end() ? "" : found->second;
        const Page& page = pages_[{alarm, pager.name}];
        const bool confirms = pager.type >= kFirstSms;
        if (end == "done") {
            ++totals_.done;
            Require(confirms && page.sent >= 1, name + " is done, and was not sent");
        } else if (end == "given up") {
            ++totals_.given_up;
            Require(page.tries > pager.retries,
                    name + " was given up after " + std::to_string(page.tries) + " tries");
            Require(!confirms || page.sent == 0, name + " was given up, and was sent");
        } else if (end == "acknowledged") {
            ++totals_.acknowledged;
            Require(books_.acknowledged.count(alarm) != 0, name + " was dropped");
        } else {
            totals_.complaints.push_back(name + (end.empty() ? " is lost" : " is still " + end));
        }
        const int most = confirms ? 1 : 2 * (pager.retries + 1);
        Require(page.sent <= most, name + " was sent " + std::to_string(page.sent) + " times");
    }

    void Require(bool holds, const std::string& complaint) {
        if (!holds) {
            totals_.complaints.push_back(complaint);
        }
    }

    struct Page {
        int tries = 0;
        int sent = 0;
    };
    const Books& books_;
    std::vector<bool> taken_;  // calls
    std::map<std::string, soak::Pager> pagers_;
    std::map<std::pair<std::string, std::string>, Page> pages_;
    Totals totals_;
};

}  // namespace

Totals Judge(const Books& books) {
    return Judgement(books).Pass();
}

}  // namespace proof::site_soak
