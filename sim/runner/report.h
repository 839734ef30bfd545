// What came of a run: the calls, the pages, and whether they are those that were expected.
#ifndef PAGERFWD_SIM_RUNNER_REPORT_H
#define PAGERFWD_SIM_RUNNER_REPORT_H

#include <optional>
#include <string>
#include <vector>

#include "sim/file/exchange_file.h"
#include "sim/record/event.h"

namespace pagersim {

struct DeliveredPage {
    std::string centre, recipient, text;  // text as PrintableText
    Milliseconds at{0};
    std::size_t call = 0;  // index into Report::calls
};

struct CallRecord {
    std::string line, centre, number;
    Milliseconds from{0}, to{0};
};

// Built by adding events in their order.
class Report {
 public:
    void Add(const Event& event);

    const std::vector<CallRecord>& Calls() const { return calls_; }
    const std::vector<DeliveredPage>& Pages() const { return pages_; }
    Milliseconds End() const { return end_; }  // when the last event was

 private:
    CallRecord* CallOn(const std::string& line, const std::string& centre);

    std::vector<CallRecord> calls_;
    std::vector<DeliveredPage> pages_;
    Milliseconds end_{0};
};

// "sms:123=HELLO"; none when the form is another. A text may hold ':' and '='.
std::optional<Expectation> ParseExpectation(const std::string& text);

// Exactly the expected pages and no others, in whatever order.
struct Comparison {
    std::vector<Expectation> missing;
    std::vector<DeliveredPage> unexpected;

    bool Met() const { return missing.empty() && unexpected.empty(); }
};
Comparison Compare(const std::vector<Expectation>& expected,
                   const std::vector<DeliveredPage>& pages);

// In words, for people.
std::string DescribePages(const std::vector<std::string>& centres, const Report& report,
                          const std::string& time = "virtual time");
std::string DescribeComparison(const Comparison& comparison);

// In JSON, for programs. `comparison` is null when nothing was said about what to expect.
std::string ReportAsJson(const Report& report, int status, const Comparison* comparison);

}  // namespace pagersim

#endif
