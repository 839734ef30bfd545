// What happens in each run of the crash test: the site, what the service does and when, and how
// often each page is then sent. The process that is killed and the one that judges share this and
// the words of the ledger, nothing else.
#ifndef PAGERFWD_TESTS_PROOF_CRASH_SCENARIO_H
#define PAGERFWD_TESTS_PROOF_CRASH_SCENARIO_H

#include <array>
#include <string>
#include <string_view>

namespace proof::crash {

// --- Where a run is killed. The order is that of kPhaseNames.

enum class Phase { kOther, kBeforeAnswer, kRewriting, kDial, kTransfer, kAccepted, kAsleep };

constexpr std::array<std::string_view, 7> kPhaseNames = {
    "elsewhere", "before the answer", "between delete and insert",
    "dial",      "transfer",          "accepted but row not yet rewritten",
    "asleep"};

// The point at which a process kills itself: the so manyth of those that lie in a phase. Threads
// need not come to their points in the same order in two runs; how many lie in a phase hardly
// changes.
struct Target {
    enum class Kind { kNone, kCensus, kPoint, kRefusal };

    Kind kind = Kind::kNone;
    Phase phase = Phase::kOther;
    long nth = 0;
    int seconds = 0;    // of a refusal; 0: the one call
    bool full = false;  // of a point: the disk is full, but for the store's reserve
};

// From the so manyth write or sync of the store's files on, the file system has no space.
inline Target RefusalFrom(long nth, int seconds) {
    return {Target::Kind::kRefusal, Phase::kOther, nth, seconds, false};
}

// As a word of the command line: "none", "census", "3.17", "3.17f" on a full disk, "full.17.1200".
inline std::string WordFor(const Target& target) {
    switch (target.kind) {
        case Target::Kind::kNone:
            return "none";
        case Target::Kind::kCensus:
            return "census";
        case Target::Kind::kRefusal:
            return "full." + std::to_string(target.nth) + "." + std::to_string(target.seconds);
        case Target::Kind::kPoint:
            break;
    }
    return std::to_string(static_cast<int>(target.phase)) + "." + std::to_string(target.nth) +
           (target.full ? "f" : "");
}

inline Target TargetFor(const std::string& word) {
    if (word == "none") {
        return {};
    }
    if (word == "census") {
        return {Target::Kind::kCensus};
    }
    const std::string full = "full.";
    if (word.compare(0, full.size(), full) == 0) {
        return RefusalFrom(std::stol(word.substr(full.size())),
                           std::stoi(word.substr(word.rfind('.') + 1)));
    }
    const auto phase = static_cast<Phase>(std::stoi(word));
    return {Target::Kind::kPoint, phase, std::stol(word.substr(word.find('.') + 1)), 0,
            word.back() == 'f'};
}

// --- The ledger: a file that every life of a run adds lines to, each whole before it goes on.
//
//   forward ALARM PAGER            AlarmFwdPager is called
//   answer ALARM PAGER RESULT      ... and has answered
//   acknowledge ALARM              the alarm log is written
//   acknowledged ALARM WALL        ... and is
//   restart                        the engine is stopped and started, in one process
//   dial ALARM PAGER WALL          a call is placed
//   received ALARM PAGER WALL RECIPIENT TEXT
//   killed PHASE ALARM PAGER STAGE WALL WRITING UNFOLDED
//                                  WRITING 1: within a write of the store; UNFOLDED: the alarm
//                                  whose row was put back and whose state was not yet written, or 0
//   writes COUNT                   at the end of a census: writes and syncs of the store's files
//   told TEXT                      the store tells its operator
//   row ALARM PAGER RETRIES STATE  at the end: a row of the events table
//   alarm ALARM STATE              at the end: the alarm log
//   end

constexpr const char* kLedger = "ledger";
constexpr const char* kCensus = "census";  // a digit for each point: the phase it lies in
constexpr const char* kDatabase = "site.db";

// --- The site. Texts without blanks.

struct PagerPlan {
    const char* name;
    const char* type;
    const char* number;
    int retries;
    int delay_minutes;
    int sends;  // how often a page is received when nothing goes wrong
    int calls;  // how often it is dialled then, but for a centre that is busy at first
};

constexpr std::array<PagerPlan, 7> kPagerPlans = {{
    {"tap", "sms1", "5550111", 5, 45, 1, 1},
    {"ucp", "sms2", "5550112", 3, 15, 1, 1},
    {"plain", "alphanumeric", "5550100@3003", 1, 10, 2, 2},
    {"numeric", "numeric", "5550100@2002", 0, 10, 1, 1},
    {"signal", "signal", "5550104@", 0, 10, 1, 1},
    {"ntt", "ntt", "5550103", 0, 10, 1, 1},
    {"lost", "alphanumeric", "5550999@1", 1, 5, 0, 4},  // its number reaches nobody
}};

// --- What the service does, in seconds after the beginning.

enum class Deed { kForward, kAcknowledge, kRestart };

struct Action {
    int at;
    Deed deed;
    int alarm = 0;
    const char* pager = "";
};

constexpr std::array<Action, 14> kActions = {{
    {0, Deed::kForward, 1, "tap"},  // the centre is busy at this first call
    {0, Deed::kForward, 1, "plain"},
    {200, Deed::kForward, 2, "ucp"},
    {250, Deed::kForward, 3, "numeric"},
    {250, Deed::kForward, 3, "ntt"},
    {400, Deed::kForward, 4, "lost"},
    {600, Deed::kForward, 5, "plain"},
    {630, Deed::kForward, 6, "signal"},
    {900, Deed::kAcknowledge, 5},
    {1500, Deed::kForward, 7, "tap"},
    {1500, Deed::kForward, 7, "plain"},
    {1510, Deed::kRestart},
    {1530, Deed::kForward, 8, "ucp"},
    {1600, Deed::kForward, 9, "numeric"},
}};

constexpr int kAlarms = 9;
constexpr int kForwards = 12;
constexpr int kBusyCalls = 1;  // of the TAP centre

}  // namespace proof::crash

#endif
