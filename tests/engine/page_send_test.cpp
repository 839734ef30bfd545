// Tests of engine/page_send.cpp: one page, from its look-up to its result, each way it can go.
#include "modem/COMHdl.h"
#include "tests/engine/engine_test.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

using Answer = PagingModem::Answer;

constexpr int kLeftAlone = 1234;

class PageSend : public EngineTest {
 protected:
    PageSend() {
        AddAlarm(7);
        Start();
    }

    // What one page to the pager comes to; result is kLeftAlone before it.
    bool Send(const PagerRow& pager, const char* group = "OPS/042") {
        store.Delete(kPagers, {"description", pager.description});
        AddPager(pager);
        return SendTo(pager.description.c_str(), group);
    }
    bool SendTo(const char* pager, const char* group = "OPS/042") {
        ForwardQEntry* entry = MakeEntry(7, pager, 0, group);
        result = kLeftAlone;
        const bool delivered = CPagerHdl::PagerSendMessage(entry, false, nullptr, &result);
        CPagerHdl::FreeQEntry(entry);
        return delivered;
    }
    void SetDetails(const std::string& details) {
        store.Update(kAlarms, {"alarmlogID", "7"}, {{"details", details}});
    }
    void SetSeverity(int severity) {
        store.Update(kAlarms, {"alarmlogID", "7"}, {{"severity", std::to_string(severity)}});
    }

    int result = kLeftAlone;
};

// --- Results

TEST_F(PageSend, DeliveredPageIs0) {
    EXPECT_TRUE(Send({"sms", kSms1}));
    EXPECT_EQ(0, result);
}

TEST_F(PageSend, UnknownPagerIsMinus1) {
    EXPECT_FALSE(SendTo("ghost"));
    EXPECT_EQ(-1, result);
    EXPECT_THAT(EngineTrace(), ElementsAre("CPagerHdl::CPagerHdl: alarms\n", "*** START PAGING ***",
                                           "CDB_PagerSettings::GetPager: ghost: ",
                                           "CDB_PagerSettings::GetPager:Count: 0\n",
                                           "Pager NOT found!", "*** END PAGING ***"));
}

TEST_F(PageSend, UnknownTimeModelIsMinus1) {
    EXPECT_FALSE(Send({"sms", kSms1, 5, 45, "555", "no such hours"}));
    EXPECT_EQ(-1, result);
    const std::vector<std::string> trace = EngineTrace();
    EXPECT_EQ("Using unknown Timemodel!", trace[trace.size() - 2]);
    EXPECT_EQ("*** END PAGING ***", trace.back());
    EXPECT_EQ(1, line.Opens()) << "only when the ports were explored";
}

TEST_F(PageSend, OutsideItsHoursCountsAsSentAndLeavesTheResultAlone) {
    EXPECT_TRUE(Send({"sms", kSms1, 5, 45, "555", "never"}));
    EXPECT_EQ(kLeftAlone, result);
    EXPECT_EQ(1, line.Opens());
    const std::vector<std::string> trace = EngineTrace();
    EXPECT_EQ("IsHourSet: 2 10 0\n", trace[trace.size() - 3]);
    EXPECT_EQ("Time out of bounds! (Good SEND!)", trace[trace.size() - 2]);
    EXPECT_EQ("*** END PAGING ***", trace.back());
}

TEST_F(PageSend, PortThatCannotBeOpenedIs5) {
    EXPECT_FALSE(Send({"sms", kSms1, 5, 45, "555", "always", "COM 5"}));
    EXPECT_EQ(5, result);
    const std::vector<std::string> trace = EngineTrace();
    EXPECT_EQ("COM port cannot be opened!", trace[trace.size() - 2]);
    EXPECT_EQ("*** END PAGING ***", trace.back());
}

struct FailureCase {
    const char* situation;
    Answer answer;
    int result;
    std::vector<std::string> trace;  // behind the message
};

TEST_F(PageSend, FailingStepsStoreTheirCode) {
    const FailureCase kCases[] = {
        {"the modem doesn't initialise",
         Answer::kIgnoresInit,
         8,
         {"Cannot Initialize the modem!", "Before CloseComPort", "*** END PAGING ***"}},
        {"the number is busy",
         Answer::kBusy,
         6,
         {"Before Dial", "Dialing fails!", "Before CloseComPort", "*** END PAGING ***"}},
        {"the service falls silent",
         Answer::kFallsSilent,
         7,
         {"Before Dial", "After Dial", "Before TransMsg", "Message NOT transfered!",
          "Before CloseComPort", "*** END PAGING ***"}},
    };
    for (const FailureCase& c : kCases) {
        modem->Plan({c.answer});
        EXPECT_FALSE(Send({"sms", kSms1})) << c.situation;
        EXPECT_EQ(c.result, result) << c.situation;
        EXPECT_TRUE(CCOMHdl::MainModemError) << c.situation;
        const std::vector<std::string> trace = EngineTrace();
        const auto size = static_cast<std::ptrdiff_t>(c.trace.size());
        EXPECT_EQ(c.trace, std::vector<std::string>(trace.end() - size, trace.end()))
            << c.situation;
        EXPECT_EQ(line.Opens(), line.Closes()) << c.situation;
    }
}

TEST_F(PageSend, NobodyNeedsToAskForTheResult) {
    modem->Plan({Answer::kIgnoresInit, Answer::kBusy, Answer::kFallsSilent, Answer::kDelivers});
    AddPager({"sms", kSms1});
    for (const bool delivered : {false, false, false, true}) {
        ForwardQEntry* entry = MakeEntry(7, "sms");
        EXPECT_EQ(delivered, CPagerHdl::PagerSendMessage(entry, false, nullptr, nullptr));
        CPagerHdl::FreeQEntry(entry);
    }
    ForwardQEntry* entry = MakeEntry(7, "ghost");
    EXPECT_FALSE(CPagerHdl::PagerSendMessage(entry, false, nullptr, nullptr));
    CPagerHdl::FreeQEntry(entry);
}

TEST_F(PageSend, ModemErrorOfThePageBeforeIsForgotten) {
    CCOMHdl::MainModemError = true;
    Send({"sms", kSms1, 5, 45, "555", "never"});
    EXPECT_FALSE(CCOMHdl::MainModemError);
}

TEST_F(PageSend, IsNoTest) {
    DuringTheNextPage([] { EXPECT_FALSE(CCOMHdl::ModemTest); });
    Send({"sms", kSms1});
}

// --- Hanging up

TEST_F(PageSend, FailedResetIsTracedAfterAPageThatWentWell) {
    modem->Plan({Answer::kDeliversAndDies});
    EXPECT_TRUE(Send({"sms", kSms1})) << "the page counts";
    EXPECT_EQ(1, CountInTrace("Reset Modem fails"));
}

TEST_F(PageSend, FailedResetIsNoNewsAfterAModemError) {
    modem->Plan({Answer::kBusyAndDies});
    EXPECT_FALSE(Send({"sms", kSms1}));
    EXPECT_EQ(6, result);
    EXPECT_EQ(0, CountInTrace("Reset Modem fails"));
}

// --- The header in the trace

TEST_F(PageSend, HeaderTellsThePageInThisOrder) {
    store.Insert(kAlarms, {{"alarmlogID", "979000000"}, {"pagerstate", "2"}, {"severity", "1"}});
    AddPager({"anna", kNumeric, 5, 45, "0800@555", "never", "COM 2"});
    const std::string now = LocalTime("%x\t%X\t");
    ForwardQEntry* entry = MakeEntry(979000000, "anna", 0, "OPS");
    CPagerHdl::PagerSendMessage(entry, false, nullptr, nullptr);
    CPagerHdl::FreeQEntry(entry);
    EXPECT_THAT(
        EngineTrace(),
        ElementsAre("CPagerHdl::CPagerHdl: alarms\n", "*** START PAGING ***",
                    "CDB_PagerSettings::GetPager: anna: ", "CDB_PagerSettings::GetPager:Count: 1\n",
                    "Try to page for anna at " + now + ": ", "COM: COM 2",
                    "Pagernumber: 0800@555 (numeric", "Timemodel: never",
                    "Caused through alarm: OPS (approximately logging time:01/09/01 / 00:26:40)",
                    "Server: SRV1\tSeverity: Critical", "IsHourSet: 2 10 0\n",
                    "Time out of bounds! (Good SEND!)", "*** END PAGING ***"));
}

TEST_F(PageSend, NegativeSeverityHasNoNameInTheHeader) {
    SetSeverity(-1);
    Send({"sms", kSms1});
    EXPECT_EQ(1, CountInTrace("Server: SRV1\tSeverity: "));
    EXPECT_EQ(1, CountInTrace("Message to send: OPS/unknown severity/SRV1/pump 3 failed"));
}

struct HourCase {
    const char* situation;
    long minutesAfterTheStart;  // Monday, 10 o'clock
    int cell;
    const char* trace;
};

TEST_F(PageSend, TheHourOfTheWeekDecides) {
    const HourCase kCases[] = {
        {"Monday, 10:00", 0, 10, "IsHourSet: 2 10 1\n"},
        {"Monday, 10:59", 59, 10, "IsHourSet: 2 10 1\n"},
        {"Monday, 0:10", 7 * 1440 - 590, 0, "IsHourSet: 2 0 1\n"},
        {"Tuesday, 0:00", 840, 24, "IsHourSet: 3 0 1\n"},
        {"Saturday, 12:00", 5 * 1440 + 120, 5 * 24 + 12, "IsHourSet: 7 12 1\n"},
        {"Sunday, 23:30", 6 * 1440 + 810, 167, "IsHourSet: 1 23 1\n"},
    };
    const time_t start = time(nullptr);
    for (const HourCase& c : kCases) {
        pagersim::VirtualClock::Set(start + c.minutesAfterTheStart * 60);
        std::string hours(168, '0');
        hours[static_cast<size_t>(c.cell)] = '1';
        store.Delete(kTimeModels, {"description", "one hour"});
        store.InsertTimeModel("one hour", hours);
        EXPECT_TRUE(Send({"sms", kSms1, 5, 45, "555", "one hour", "COM 5"}) ||
                    CountInTrace("COM port cannot be opened!") > 0)
            << c.situation;
        EXPECT_EQ(1, CountInTrace(c.trace)) << c.situation;
        test_support::ForgetTrace();
    }
}

// --- What each type sends

TEST_F(PageSend, SignalPageIsANumberOnly) {
    EXPECT_TRUE(Send({"anna", kSignal}));
    EXPECT_THAT(Pages(), ElementsAre("555|"));
    EXPECT_EQ(1, CountInTrace("Message to send: "));
}

TEST_F(PageSend, NumericPageIsANumberOnly) {
    EXPECT_TRUE(Send({"anna", kNumeric}));
    EXPECT_THAT(Pages(), ElementsAre("555|"));
}

TEST_F(PageSend, AlphanumericPageHas80Characters) {
    SetDetails(std::string(100, 'x'));
    EXPECT_TRUE(Send({"anna", kAlphanumeric}));
    EXPECT_THAT(Pages(), ElementsAre("555|OPS/Major/SRV1/" + std::string(65, 'x')));
}

TEST_F(PageSend, SmsPagesHave140Characters) {
    SetDetails(std::string(200, 'x'));
    EXPECT_TRUE(Send({"sms", kSms1}));
    EXPECT_THAT(Pages(), ElementsAre("555|OPS/Major/SRV1/" + std::string(125, 'x')));
    EXPECT_TRUE(Send({"ucp", kSms2}));
    ASSERT_THAT(Pages(), SizeIs(2));
    std::string hex;
    for (int i = 0; i < 125; ++i) {
        hex += "78";
    }
    EXPECT_NE(std::string::npos, Pages()[1].find("2F" + hex + "/////////////"));
}

TEST_F(PageSend, GroupWithoutASlashIsTheBeginningOfTheText) {
    EXPECT_TRUE(Send({"sms", kSms1}, "OPERATIONS"));
    EXPECT_THAT(Pages(), ElementsAre("555|OPERATIONS/Major/SRV1/pump 3 failed"));
}

TEST_F(PageSend, MissingDetailsAreEmpty) {
    store.AddTable(kAlarms, {"alarmlogID", "pagerstate", "severity"});
    store.Insert(kAlarms, {{"alarmlogID", "7"}, {"pagerstate", "2"}, {"severity", "2"}});
    EXPECT_TRUE(Send({"sms", kSms1}));
    EXPECT_THAT(Pages(), ElementsAre("555|OPS/Major/SRV1/"));
}

TEST_F(PageSend, NTTPageIsDialled) {
    EXPECT_TRUE(Send({"ntt", kNTT, 5, 45, "0123"}));
    ASSERT_THAT(modem->Calls(), SizeIs(2));
    EXPECT_EQ("ATDT10123;", modem->Calls()[0].command) << "the pager's number, in command state";
    EXPECT_EQ("ATDT*2*2976049485796##;", modem->Calls()[1].command);
    EXPECT_EQ(1, CountInTrace("Message to send: 2/SRV1"));
}

// --- Numbers

TEST_F(PageSend, PrefixIsDialledAndTheNumberIsTransferred) {
    EXPECT_TRUE(Send({"anna", kAlphanumeric, 5, 45, "0800@555"}));
    EXPECT_EQ("ATDT10800", modem->Calls().at(0).command);
    EXPECT_THAT(Pages(), ElementsAre("555|OPS/Major/SRV1/pump 3 failed"));
}

TEST_F(PageSend, WithoutANumberTheDialIsThePage) {
    EXPECT_TRUE(Send({"anna", kAlphanumeric, 5, 45, "0800@"}));
    EXPECT_EQ(0, result);
    EXPECT_EQ("ATDT10800", modem->Calls().at(0).command);
    EXPECT_THAT(Pages(), IsEmpty());
    EXPECT_EQ(1, CountInTrace("After Dial"));
    EXPECT_EQ(0, CountInTrace("Before TransMsg"));
}

TEST_F(PageSend, UnansweredDialIsAPageToo) {
    modem->Plan({Answer::kBusy});
    EXPECT_TRUE(Send({"anna", kAlphanumeric, 5, 45, "0800@"}));
    EXPECT_EQ(0, result);
}

TEST_F(PageSend, AnyFreePortWillDo) {
    EXPECT_TRUE(Send({"anna", kAlphanumeric, 5, 45, "555", "always", ""}));
    EXPECT_EQ(1, CountInTrace("COM: "));
}

}  // namespace
