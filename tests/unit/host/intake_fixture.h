// The fixture of tests on the way of an alarm: taken up, given to a line, and handed over to a
// library that is made up.
#ifndef PAGERFWD_TESTS_UNIT_HOST_INTAKE_FIXTURE_H
#define PAGERFWD_TESTS_UNIT_HOST_INTAKE_FIXTURE_H

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/line/hand_over.h"
#include "host/node/intake.h"
#include "host/pages/page_owner.h"
#include "tests/unit/host/service_test.h"

namespace host {

struct ProcessDied {};

class IntakeTest : public ServiceTest {
 protected:
    IntakeTest() {
        Execute("INSERT INTO Host_Routes VALUES (1, 'ops', ''), (2, 'o*', '')");
        Route(1, {"b", "a"});
        Route(2, {"a", "c"});
        for (const char* pager : {"a", "b", "c"}) {
            AddPager(pager);
        }
    }

    void Route(int64_t number, const std::vector<std::string>& pagers) {
        int64_t place = 0;
        for (const std::string& pager : pagers) {
            Statement(connection, "INSERT INTO Host_RoutePagers VALUES (?, ?, ?)")
                .Bind(number)
                .Bind(place++)
                .Bind(pager)
                .Run();
        }
    }

    // The library: what it is called with, "7 to b", and the row that it writes when it says yes.
    int32_t Forward(const Alarm& alarm, const Delivery& delivery) {
        EXPECT_EQ("2", StateOf(alarm.number));
        calls.push_back(delivery.alarm + " to " + delivery.pager);
        on_the_line.pager = delivery.pager.substr(0, kTracedTextKept);
        on_the_line.alarm = delivery.group.substr(0, kTracedTextKept);
        if (forwarded) {
            forwarded(alarm, delivery);
        }
        if (dies_before_call == calls.size()) {
            throw ProcessDied();
        }
        const int32_t answer = answers.count(delivery.pager) != 0 ? answers[delivery.pager] : 1;
        if (answer == 1) {
            WriteEvent(std::stoi(alarm.number), delivery.pager.c_str(), 2, 0,
                       delivery.group.c_str());
        }
        if (dies_after_call == calls.size()) {
            throw ProcessDied();
        }
        return answer;
    }

    void Run() {
        intake->Run(connection);
        for (const Delivery& delivery : OpenDeliveries(connection)) {
            GiveToLine(connection, delivery, "north");
        }
        size_t before = 0;
        do {
            before = calls.size();
            hand_over->Run(connection);
            hand_over->Saw(on_the_line);
        } while (calls.size() > before);
    }

    // The process that comes next.
    void Restart() {
        dies_before_call = dies_after_call = 0;
        calls.clear();
        Make();
        Run();
    }
    void Make() {
        intake.emplace(Encoding::kLatin1, log);
        hand_over.emplace(
            "north", Encoding::kLatin1,
            [this](const Alarm& alarm, const Delivery& delivery) {
                return Forward(alarm, delivery);
            },
            log);
    }

    // "b 1": the pagers of alarm 7 and the answers noted, "b -" where there is none yet.
    std::vector<std::string> Noted(const std::string& alarm = "7") {
        return Rows(
            "pager || ' ' || coalesce(CAST(answer AS TEXT), '-') FROM Host_Deliveries WHERE alarm "
            "= '" +
            alarm + "' ORDER BY place");
    }

    std::optional<Intake> intake;
    std::optional<HandOver> hand_over;
    TracedPage on_the_line;  // the page that was handed over last
    std::vector<std::string> calls;
    std::function<void(const Alarm&, const Delivery&)> forwarded;
    std::map<std::string, int32_t> answers;
    size_t dies_before_call = 0;
    size_t dies_after_call = 0;

    void SetUp() override { Make(); }
};

}  // namespace host

#endif
