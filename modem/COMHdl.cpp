// Construction and destruction of the modem handler, and the state that all its operations share.
// Tested by tests/unit/modem/com_hdl_test.cpp.

#include "modem/COMHdl.h"

#include <cstring>

#include "tables/com_ports.h"

CCOMHdl* CCOMHdl::COMHdl = nullptr;
std::unique_ptr<char[]> CCOMHdl::m_dB;
std::unique_ptr<CDB_ComPorts> CCOMHdl::pDBComPorts;
ComPort* CCOMHdl::COMPortTable[kMaxPorts] = {};
std::atomic<bool> CCOMHdl::InitOK{false};
HANDLE CCOMHdl::ComHandle = nullptr;
DWORD CCOMHdl::ComWriteBytes = 0;

CString CCOMHdl::MStrInit;
CString CCOMHdl::MStrReset;
CString CCOMHdl::MStrDialPrefix;
CString CCOMHdl::MStrActivityPrompt;
CString CCOMHdl::MStrS1Protocol;
CString CCOMHdl::MStrS1Number;
CString CCOMHdl::MStrS2Protocol;
CString CCOMHdl::MStrS2Number;
CString CCOMHdl::MSms1_80;
CString CCOMHdl::MSms2_80;
CString CCOMHdl::MStrCR;

CString CCOMHdl::MStrOK;
CString CCOMHdl::MStrConnect;
CString CCOMHdl::MStrBusy;
CString CCOMHdl::MStrNoDial;
CString CCOMHdl::MStrNoAnswer;
CString CCOMHdl::MStrNoCarrier;
CString CCOMHdl::MStrError;

CString CCOMHdl::COMStrDefault;

DWORD CCOMHdl::MDialTimeOut = 0;
DWORD CCOMHdl::MTAPReadyTimeOut = 0;
DWORD CCOMHdl::MUCPReadyTimeOut = 0;
DWORD CCOMHdl::MPagerReadyTimeOut = 0;
DWORD CCOMHdl::MUCPWaitForHandShake = 0;
DWORD CCOMHdl::MNTTWaitForAnswer = 0;
DWORD CCOMHdl::MNTTWaitForDial = 0;
std::atomic<DWORD> CCOMHdl::MPeekWait{0};

std::atomic<bool> CCOMHdl::ModemTest{false};
std::atomic<bool> CCOMHdl::MainModemError{false};
std::atomic<int32_t> CCOMHdl::PageProtocol{0};

CCriticalSection CCOMHdl::lock;
CString CCOMHdl::trace;
CCriticalSection CCOMHdl::lockTrace;

CCOMHdl::CCOMHdl(const char* dbName) try {
    COMHdl = this;

    const char* name = dbName != nullptr ? dbName : "";
    const size_t size = strlen(name) + 1;
    m_dB = std::make_unique<char[]>(size);
    memcpy(m_dB.get(), name, size);
    if (pDBComPorts == nullptr) {
        pDBComPorts = std::make_unique<CDB_ComPorts>(m_dB.get());
    }

    SetModemStrings();
    InitOK = true;
    ComHandle = nullptr;
    SetTimeOuts();
    ExploreCOMPorts();
    StartTrace();
    FillSmsTable();
} catch (...) {
    ForgetHandler();  // half made, it gets no destructor
}

CCOMHdl::~CCOMHdl() {
    ForgetHandler();
}

void CCOMHdl::ForgetHandler() {
    FreeCOMPorts();
    pDBComPorts.reset();
    COMHdl = nullptr;
    InitOK = false;
}

// The numbers in the dial commands are ones that reach nobody: a forgotten default must not call a
// stranger. "0," takes an outside line.
void CCOMHdl::SetModemStrings() {
    MStrInit = "AT&F";
    MStrReset = "ATZ";
    MStrDialPrefix = "ATDT0,5550100";
    MStrActivityPrompt = ">";
    MStrS1Protocol = "TAP";
    MStrS1Number = "ATDT0,5550101";
    MStrS2Protocol = "UCP";
    MStrS2Number = "ATDT0,5550102";
    MSms1_80 = "";
    MSms2_80 = "";
    MStrCR = "\r";

    MStrOK = "OK";
    MStrConnect = "CONNECT";
    MStrBusy = "BUSY";
    MStrNoDial = "NO DIALTONE";
    MStrNoAnswer = "NO ANSWER";
    MStrNoCarrier = "NO CARRIER";
    MStrError = "ERROR";

    COMStrDefault = "2400,n,8,1,n";
}

void CCOMHdl::SetTimeOuts() {
    MDialTimeOut = 120000;
    MTAPReadyTimeOut = 30000;
    MUCPReadyTimeOut = 30000;
    MPagerReadyTimeOut = 30000;
    MUCPWaitForHandShake = 13000;
    MNTTWaitForAnswer = 20000;
    MNTTWaitForDial = 15000;
    MPeekWait = 0;
}

void CCOMHdl::FreeCOMPorts() {
    for (ComPort*& port : COMPortTable) {
        if (port == nullptr) {
            break;
        }
        delete port->modemSet;
        delete port;
        port = nullptr;
    }
}
