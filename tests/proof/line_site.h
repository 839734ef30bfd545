// A site with a pager of each kind on one line, between whose program and modem a fault can be put;
// and what has to hold after each page, whatever the fault:
//   - it ends in time, with a code that a page can end with;
//   - the port is free again;
//   - the next page goes through.
// A centre that speaks a protocol with a checksum and has confirmed a page has it word for word.
#ifndef PAGERFWD_TESTS_PROOF_LINE_SITE_H
#define PAGERFWD_TESTS_PROOF_LINE_SITE_H

#include <gtest/gtest.h>
#include <pagerfwd/pagerfwd.h>

#include <cstddef>
#include <memory>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "sim/centre.h"
#include "sim/phone/exchange.h"
#include "sim/phone/faults.h"
#include "sim/record/event.h"
#include "sim/testing.h"
#include "tests/proof/faulty_line.h"
#include "tests/support/memory_store.h"
#include "tests/support/temp_dir.h"

namespace proof {

struct PagerKind {
    const char* name;
    const char* type;
    const char* number;
    const char* recipient;     // as the centre sees it
    const char* text;          // ... and this, where the protocol has a checksum; else null
    const char* last_awaited;  // of what the centre says; null: nothing is awaited from it
};

// Those with a carrier to lose first.
extern const std::vector<PagerKind> kPagerKinds;
constexpr size_t kKindsWithCarrier = 4;

std::ostream& operator<<(std::ostream& out, const PagerKind& kind);

// What reached the centres.
class Received : public pagersim::Recorder {
 public:
    void Record(const pagersim::Event& event) override {
        if (event.kind == pagersim::EventKind::kDelivers) {
            pages.push_back({event.recipient, event.text});
        } else if (event.kind == pagersim::EventKind::kSends && event.who != pagersim::kProgram &&
                   event.who != pagersim::kModem) {
            said += event.text;
        }
    }
    std::vector<pagersim::ReceivedPage> pages;
    std::string said;  // by the centre
};

class LineSite : public ::testing::TestWithParam<PagerKind> {
 protected:
    LineSite();
    ~LineSite() override;

    // A page; its code.
    int Page();

    bool WasDelivered() const;

    // Once more, without a fault.
    void ExpectThatAllIsWell(size_t nth);

    // The page with the fault; its code, which is one of these.
    int PageWith(LineFault fault, size_t nth, const std::set<int>& codes);

    struct Counts {
        size_t sent, heard;
    };
    // Of a page that goes well.
    Counts CountBytes();

    pagersim::VirtualClock clock;
    const test_support::TempDir folder;
    test_support::MemoryStore store;
    pagersim::Exchange exchange;
    pagersim::Faults centre_faults;
    Received received;
    FaultyLine* faulty = nullptr;  // the line's
    std::unique_ptr<pagersim::AttachedLine> line;
    char database[7] = "alarms";
    char name[5] = "test";
    char port[6] = "COM 1";
    char hours[7] = "always";
    int32_t no_alarm = 0;
    FwdSpecialInfoStr info{database, &no_alarm, nullptr, nullptr};

 private:
    void FillTables();
    void AddCentres();
};

inline std::string NameOf(const ::testing::TestParamInfo<PagerKind>& kind) {
    return kind.param.name;
}

}  // namespace proof

#endif
