// Keeps a site of several lines, inside a simulated world, in whose processes calls of the system
// fail: raises a few alarms, and starts the node anew when it has ended, as a service manager does.
//   fault_site keep ROLES KIND ERROR FIRST EVERY LASTING PROGRAM LIBRARY FAULTS_MODULE
//                                        the numbers of call_faults.h
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>

#include "tests/proof/call_faults.h"
#include "tests/proof/fault_scenario.h"
#include "tests/proof/kept_site.h"
#include "tests/proof/kill_scenario.h"
#include "tests/proof/shared_plan.h"

namespace proof::kills {
namespace {

constexpr int kDownTime = 3;  // seconds, from a node's end to the next

class Keeper {
 public:
    Keeper(CallFaults& faults, Node& node) : faults_(faults), node_(node) {}

    void Keep() {
        node_.Start(false);
        while (Now() < kEndOfFaults || (faults_.until != 0 && std::time(nullptr) < faults_.until)) {
            Second();
        }
        faults_.roles = 0;
        for (const int end = Now() + kAfterwards; Now() < end;) {
            Second();
        }
        if (node_.IsUp()) {
            node_.AskToEnd();
            node_.WaitForEnd(ledger_);
        }
        node_.Start(true);
        node_.WaitForEnd(ledger_);
        WriteEnd(ledger_);
        WriteCounts();
    }

 private:
    void Second() {
        sleep(1);
        int status = 0;
        if (node_.HasEnded(status)) {
            ledger_ << "node " << std::time(nullptr) << " " << status << std::endl;
            down_until_ = Now() + kDownTime;
        }
        if (!node_.IsUp() && Now() >= down_until_) {
            node_.Start(false);
        }
        if (alarms_ < kAlarmsAt.size() && Now() >= kAlarmsAt.at(alarms_)) {
            const std::string group = Routes()[alarms_ % Routes().size()].group;
            RaiseNext(ledger_, static_cast<int>(++alarms_), group);
        }
    }

    void WriteCounts() {
        std::ofstream counts(kCounts);
        for (const auto& role : faults_.made) {
            for (const auto& made : role) {
                counts << made << " ";
            }
        }
        counts << faults_.failed << "\n";
    }

    CallFaults& faults_;
    Node& node_;
    std::ofstream ledger_{kLedger};
    size_t alarms_ = 0;
    int down_until_ = 0;
};

}  // namespace
}  // namespace proof::kills

int main(int argc, char** argv) {
    using namespace proof::kills;
    if (argc != 11 || std::string(argv[1]) != "keep") {
        std::cerr
            << "fault_site keep ROLES KIND ERROR FIRST EVERY LASTING PROGRAM LIBRARY MODULE\n";
        return 2;
    }
    auto* const faults = proof::MakePlan<proof::CallFaults>(
        std::filesystem::absolute(kPoints).c_str(), proof::kFaultsVariable);
    if (faults == nullptr) {
        return 1;
    }
    faults->kind = static_cast<uint32_t>(std::atoi(argv[3]));
    faults->error = std::atoi(argv[4]);
    faults->first = std::atoi(argv[5]);
    faults->every = std::atoi(argv[6]);
    faults->lasting = std::atoi(argv[7]);
    faults->roles = static_cast<uint32_t>(std::atoi(argv[2]));
    Node node(argv[8], argv[9], argv[10], Node::Place::kInFront);
    Keeper(*faults, node).Keep();
    return 0;
}
