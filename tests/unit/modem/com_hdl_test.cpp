// Construction and destruction of the modem handler.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tables/com_ports.h"
#include "tests/unit/modem/handler_test.h"

namespace {

// As the process begins, before any test has made a handler.
const bool ran_at_start = CCOMHdl::IsRunning() || CCOMHdl::ModemTest || CCOMHdl::MainModemError;
const std::vector<int64_t> numbers_at_start = {
    CCOMHdl::MDialTimeOut,         CCOMHdl::MTAPReadyTimeOut,
    CCOMHdl::MUCPReadyTimeOut,     CCOMHdl::MPagerReadyTimeOut,
    CCOMHdl::MUCPWaitForHandShake, CCOMHdl::MNTTWaitForAnswer,
    CCOMHdl::MNTTWaitForDial,      CCOMHdl::MPeekWait,
    CCOMHdl::PageProtocol,         CCOMHdl::ComWriteBytes};

TEST(BeforeTheFirstHandler, NothingRunsAndNothingIsWaitedFor) {
    EXPECT_FALSE(ran_at_start);
    EXPECT_EQ(std::vector<int64_t>(numbers_at_start.size(), 0), numbers_at_start);
}

class Handler : public HandlerTest {};

struct TextCase {
    const char* name;
    CString* member;
    const char* text;
};

const TextCase kTexts[] = {
    {"MStrInit", &CCOMHdl::MStrInit, "AT&F"},
    {"MStrReset", &CCOMHdl::MStrReset, "ATZ"},
    {"MStrDialPrefix", &CCOMHdl::MStrDialPrefix, "ATDT0,5550100"},
    {"MStrActivityPrompt", &CCOMHdl::MStrActivityPrompt, ">"},
    {"MStrS1Protocol", &CCOMHdl::MStrS1Protocol, "TAP"},
    {"MStrS1Number", &CCOMHdl::MStrS1Number, "ATDT0,5550101"},
    {"MStrS2Protocol", &CCOMHdl::MStrS2Protocol, "UCP"},
    {"MStrS2Number", &CCOMHdl::MStrS2Number, "ATDT0,5550102"},
    {"MStrOK", &CCOMHdl::MStrOK, "OK"},
    {"MStrConnect", &CCOMHdl::MStrConnect, "CONNECT"},
    {"MStrBusy", &CCOMHdl::MStrBusy, "BUSY"},
    {"MStrNoDial", &CCOMHdl::MStrNoDial, "NO DIALTONE"},
    {"MStrNoAnswer", &CCOMHdl::MStrNoAnswer, "NO ANSWER"},
    {"MStrNoCarrier", &CCOMHdl::MStrNoCarrier, "NO CARRIER"},
    {"MStrError", &CCOMHdl::MStrError, "ERROR"},
    {"MStrCR", &CCOMHdl::MStrCR, "\r"},
    {"MSms1_80", &CCOMHdl::MSms1_80, ""},
    {"MSms2_80", &CCOMHdl::MSms2_80, ""},
    {"COMStrDefault", &CCOMHdl::COMStrDefault, "2400,n,8,1,n"},
};

TEST_F(Handler, SetsItsTexts) {
    for (const TextCase& c : kTexts) {
        *c.member = "of an earlier handler";
    }
    MakeHandler();
    for (const TextCase& c : kTexts) {
        EXPECT_EQ(*c.member, c.text) << c.name;
    }
}

TEST_F(Handler, SetsItsWaits) {
    MakeHandler();
    EXPECT_EQ(120000U, CCOMHdl::MDialTimeOut);
    EXPECT_EQ(30000U, CCOMHdl::MTAPReadyTimeOut);
    EXPECT_EQ(30000U, CCOMHdl::MUCPReadyTimeOut);
    EXPECT_EQ(30000U, CCOMHdl::MPagerReadyTimeOut);
    EXPECT_EQ(13000U, CCOMHdl::MUCPWaitForHandShake);
    EXPECT_EQ(20000U, CCOMHdl::MNTTWaitForAnswer);
    EXPECT_EQ(15000U, CCOMHdl::MNTTWaitForDial);
    EXPECT_EQ(0U, CCOMHdl::MPeekWait);
}

TEST_F(Handler, SetsThemAgainWhenMadeAnew) {
    MakeHandler();
    CCOMHdl::MStrInit = "changed";
    CCOMHdl::MDialTimeOut = 1;
    CCOMHdl::MPeekWait = 1;
    MakeHandler();
    EXPECT_EQ(CCOMHdl::MStrInit, "AT&F");
    EXPECT_EQ(120000U, CCOMHdl::MDialTimeOut);
    EXPECT_EQ(0U, CCOMHdl::MPeekWait);
}

TEST_F(Handler, LeavesTheFlagsOfAPageAlone) {
    for (const bool value : {true, false}) {
        CCOMHdl::ModemTest = value;
        CCOMHdl::MainModemError = value;
        MakeHandler();
        EXPECT_EQ(value, CCOMHdl::ModemTest);
        EXPECT_EQ(value, CCOMHdl::MainModemError);
    }
}

TEST_F(Handler, RunsFromConstructionToDestruction) {
    EXPECT_FALSE(CCOMHdl::IsRunning());
    MakeHandler();
    EXPECT_TRUE(CCOMHdl::IsRunning());
    EXPECT_EQ(handler.get(), CCOMHdl::COMHdl);
    handler.reset();
    EXPECT_FALSE(CCOMHdl::IsRunning());
    EXPECT_EQ(nullptr, CCOMHdl::COMHdl);
}

TEST_F(Handler, IsMadeWithoutAPort) {
    MakeHandler();
    EXPECT_EQ(nullptr, CCOMHdl::COMPortTable[0]);
    EXPECT_EQ(INVALID_HANDLE_VALUE, CCOMHdl::ComHandle) << "of the last probe";
}

TEST_F(Handler, CopiesTheDatabaseName) {
    std::string name = test_support::MemoryStore::kDatabase;
    handler = std::make_unique<CCOMHdl>(name.c_str());
    name.assign(name.size(), 'x');
    EXPECT_STREQ(test_support::MemoryStore::kDatabase, CCOMHdl::m_dB.get());
}

TEST_F(Handler, TakesNoNameForAnEmptyOne) {
    handler = std::make_unique<CCOMHdl>(nullptr);
    EXPECT_STREQ("", CCOMHdl::m_dB.get());
}

TEST_F(Handler, GoesButItsDatabaseNameStays) {
    MakeHandler();
    EXPECT_NE(nullptr, CCOMHdl::pDBComPorts);
    handler.reset();
    EXPECT_EQ(nullptr, CCOMHdl::pDBComPorts);
    EXPECT_STREQ(test_support::MemoryStore::kDatabase, CCOMHdl::m_dB.get());
}

TEST_F(Handler, MadeASecondTimeKeepsTheTableAndReplacesTheName) {
    const pagersim::ScriptedLine line(1);
    AddPort("COM 1");
    MakeHandler();
    const CDB_ComPorts* const table = CCOMHdl::pDBComPorts.get();
    {
        const CCOMHdl second("another database");
        EXPECT_EQ(table, CCOMHdl::pDBComPorts.get());
        EXPECT_STREQ("another database", CCOMHdl::m_dB.get());
        EXPECT_EQ(&second, CCOMHdl::COMHdl);
        ASSERT_NE(nullptr, CCOMHdl::COMPortTable[0]) << "found through the first database";
        EXPECT_EQ(nullptr, CCOMHdl::COMPortTable[1]);
    }
    EXPECT_EQ(nullptr, CCOMHdl::COMPortTable[0]);
    EXPECT_FALSE(CCOMHdl::IsRunning());
}

TEST_F(Handler, FreesThePortTableUpToItsEnd) {
    MakeHandler();
    for (ComPort*& port : CCOMHdl::COMPortTable) {
        port = new ComPort;
    }
    CCOMHdl::COMPortTable[0]->modemSet = new ModemSet;
    CCOMHdl::COMPortTable[8]->modemSet = new ModemSet;
    handler.reset();
    for (const ComPort* port : CCOMHdl::COMPortTable) {
        EXPECT_EQ(nullptr, port);
    }
}

}  // namespace
