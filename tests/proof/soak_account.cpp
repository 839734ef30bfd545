// The account.
#include "tests/proof/soak_account.h"

#include <algorithm>
#include <fstream>
#include <map>
#include <set>

#include "host/store/connection.h"
#include "tests/proof/soak_site.h"

namespace proof::soak {
namespace {

constexpr const char* kNotes = "account";
constexpr int kOffLimit = 3;
constexpr int kDone = 4;
constexpr int kFirstSms = 4;  // this pager type and the next confirm a delivery

struct Page {
    int answer = 0;
    int dials = 0;
    int last_dial = 0;
    int first_dial = 0;
    int received = 0;
    int received_in_faulty_calls = 0;
    int state = 0;  // the last that its row had
    int tries = 0;
};

struct Books {
    std::map<PageKey, Page> pages;
    std::map<int, int> acknowledged;  // when
    std::vector<int> restarts;
};

Books ReadNotes() {
    Books books;
    std::ifstream notes(kNotes);
    char what = 0;
    PageKey key;
    int value = 0;
    while (notes >> what >> key.alarm >> key.pager >> value) {
        if (what == 'R') {
            books.restarts.push_back(value);
            continue;
        }
        if (what == 'A') {
            books.acknowledged[key.alarm] = value;
            continue;
        }
        Page& page = books.pages[key];
        switch (what) {
            case 'F':
                page.answer = value;
                break;
            case 'D':
                page.first_dial = page.dials == 0 ? value : page.first_dial;
                ++page.dials;
                page.last_dial = value;
                break;
            default:  // received
                ++page.received;
                page.received_in_faulty_calls += value;
                break;
        }
    }
    return books;
}

// The host keeps every change of a row.
void AddStates(const char* database, Books& books) {
    host::Connection connection(database);
    host::Statement history(connection,
                            "SELECT alarm, pager, state, tries FROM Host_History"
                            " WHERE change = 'written' ORDER BY row_id");
    while (history.Step()) {
        const PageKey key{std::stoi(std::string(history.Text(0))), std::string(history.Text(1))};
        Page& page = books.pages[key];
        page.state = std::stoi(std::string(history.Text(2)));
        page.tries = std::stoi(std::string(history.Text(3)));
    }
}

std::string Name(const PageKey& key) {
    return "alarm " + std::to_string(key.alarm) + " for " + key.pager;
}

class Judgement {
 public:
    Judgement(const Books& books, Account::Totals& totals) : books_(books), totals_(totals) {}

    void Of(const PageKey& key, const Page& page) {
        const Pager& pager = PagerNamed(key.pager);
        Require(page.answer == 1, key, "was not taken");
        Require(page.dials <= MostDials(page, pager), key,
                "was dialled " + std::to_string(page.dials) + " times");
        const bool confirms = pager.type >= kFirstSms;
        const int most = confirms ? 1 : pager.retries + 1;
        Require(page.received - page.received_in_faulty_calls <= most, key,
                "was received " + std::to_string(page.received) + " times");

        const auto acknowledged = books_.acknowledged.find(key.alarm);
        if (page.state == kDone) {
            ++totals_.done;
            Require(confirms && page.received >= 1, key, "is done and was not received");
        } else if (page.state == kOffLimit) {
            ++totals_.given_up;
            Require(page.tries == pager.retries + 1, key,
                    "was given up after " + std::to_string(page.tries) + " tries");
            Require(page.dials > pager.retries, key, "was given up without being dialled");
        } else {
            ++totals_.acknowledged;
            Require(acknowledged != books_.acknowledged.end(), key, "is lost");
        }
        constexpr int kSettingUp = 15;  // from the look at the alarm to the dialling
        Require(acknowledged == books_.acknowledged.end() ||
                    page.last_dial <= acknowledged->second + kSettingUp,
                key, "was dialled after its acknowledgement");
    }

 private:
    // Of two failures the first doesn't count; a restart forgets that it was.
    int MostDials(const Page& page, const Pager& pager) const {
        const auto forgetful = std::count_if(
            books_.restarts.begin(), books_.restarts.end(),
            [&](int when) { return when >= page.first_dial && when <= page.last_dial; });
        return 2 * (pager.retries + 1) + static_cast<int>(forgetful);
    }

    void Require(bool holds, const PageKey& key, const std::string& complaint) {
        if (!holds) {
            totals_.complaints.push_back(Name(key) + " " + complaint);
        }
    }

    const Books& books_;
    Account::Totals& totals_;
};

}  // namespace

Account::Account() : notes_(std::fopen(kNotes, "we")) {
    std::setvbuf(notes_.get(), nullptr, _IOLBF, BUFSIZ);
}

void Account::Note(char what, const PageKey& page, int value) {
    std::fprintf(notes_.get(), "%c %d %s %d\n", what, page.alarm,
                 page.pager.empty() ? "-" : page.pager.c_str(), value);
}

void Account::NoteForward(const PageKey& page, int answer) {
    Note('F', page, answer);
}
void Account::NoteDial(const PageKey& page, int second) {
    Note('D', page, second);
}
void Account::NoteReceived(const PageKey& page, bool in_faulty_call) {
    Note('P', page, in_faulty_call ? 1 : 0);
}
void Account::NoteAcknowledgement(int alarm, int second) {
    Note('A', {alarm, ""}, second);
}
void Account::NoteRestart(int second) {
    Note('R', {}, second);
}

Account::Totals Account::Judge(const char* database) const {
    std::fflush(notes_.get());
    Books books = ReadNotes();
    AddStates(database, books);
    Totals totals;
    Judgement judgement(books, totals);
    std::set<int> alarms;
    for (const auto& [key, page] : books.pages) {
        alarms.insert(key.alarm);
        totals.sends += page.dials;
        totals.received += page.received;
        judgement.Of(key, page);
    }
    totals.alarms = static_cast<long>(alarms.size());
    totals.pages = static_cast<long>(books.pages.size());
    return totals;
}

}  // namespace proof::soak
