// The modem handler: the serial ports of the machine, the Hayes modems on them, the dialogues that
// carry a page to a paging service, and the paging trace.
//
// This header declares the whole handler; its members are defined in one file per subject:
//   COMHdl.cpp            construction, destruction, the shared state
//   port_exploration.cpp  which ports are usable     port_settings.cpp  look-ups over them
//   port_open.cpp         taking a port for a page   modem_control.cpp  initialise, dial, hang up
//   wait_string.cpp       recognising answers        transfer.cpp       dispatch of a transfer
//   tap.cpp ucp.cpp plain_pager.cpp ntt.cpp          one dialogue each
//   trace.cpp             the trace file             sms_protocols.cpp  the two SMS protocols
#ifndef PAGERFWD_MODEM_COMHDL_H
#define PAGERFWD_MODEM_COMHDL_H

#include <atomic>
#include <cstdint>
#include <memory>

#include "linux/CriticalSection.h"
#include "linux/XString.h"
#include "linux/win_types.h"

class CDB_ComPorts;

// How a page travels. An open code: any other value is legal, sends nothing and counts as success.
enum PagerProtocol : unsigned char {
    kSignalPager = 0,
    kNumericPager = 1,
    kAlphanumericPager = 2,
    kNTTPager = 3,
    kFirstSmsService = 4,
    kSecondSmsService = 5,
};

// What a modem step stores through its int* argument; may be null wherever it is taken.
enum ModemResult : int {
    kModemSuccess = 0,
    kDialFailed = 6,
    kTransferFailed = 7,
    kModemInitFailed = 8,
};

// What OpenCOMPort returns instead of a port index.
enum OpenResult : int {
    kNoSuchPort = -1,   // no free modem port, no such name, a bad selector, an unknown device
    kPortInUse = -2,    // the named modem port is in use, or its device is
    kOpenFailed = -3,   // any other failure to open the device
    kBadSettings = -4,  // the line settings were refused
    kNoModemSet = -5,   // no memory for the modem strings
};

// The modem strings of one port.
struct ModemSet {
    CString init;
    CString reset;
    CString dialPrefix;      // the whole dial command of pager calls
    CString activityPrompt;  // what the paging service says when it expects input
    CString sms1Number;      // the whole dial command of the SMS service
    CString sms1Protocol;    // the name of a row of CCOMHdl::SmsTable
    CString sms2Number;
    CString sms2Protocol;
    CString sms1Cut80;  // "1" cuts a message to 80 characters
    CString sms2Cut80;
};

// One usable port. The line settings are texts as in the port's table row: "2400", "8", "None",
// "1".
//
// Ownership  The port does not free its modem strings; whoever deletes it deletes them first.
// Threads    name and the settings are constant after construction; handle and inUse change under
//            CCOMHdl::lock, or in CloseCOMPort, which takes none.
struct ComPort {
    std::atomic<HANDLE> handle{nullptr};  // as probed, then that of the last successful open
    CString name;                         // "COM 3": the key of the port's table row
    CString baud;
    CString pagerData;
    CString pagerParity;  // only the first letter counts
    CString pagerStop;
    CString flow;  // "None", or a word that begins with H (hardware) or X (XON/XOFF)
    bool isModem = false;
    ModemSet* modemSet = nullptr;
    std::atomic<bool> inUse{false};  // while a page is being sent over this port
    CString sms1Parity;
    CString sms1Stop;
    CString sms1Data;
    CString sms2Parity;
    CString sms2Stop;
    CString sms2Data;
};

// One protocol that an SMS service can speak.
struct SmsProtocol {
    int32_t nr = 0;  // from 1
    CString name;
    CString parity;
    CString stop;
    CString data;
    CString dial;  // the default dial command of a service that speaks it
};

// The modem handler. The process has at most one at a time.
//
// Order      A page calls OpenCOMPort, InitModem, Dial, TransMsg, ResetModem and CloseCOMPort, in
//            this order; the port index that the first returns goes to all others.
// Ownership  Owns the port table with its records, and the access to the ports' table. The database
//            name outlives the handler.
// Threads    OpenCOMPort, InitModem, Dial and TransMsg hold `lock` from beginning to end, minutes
//            long if the service is slow. ResetModem, CloseCOMPort, WaitString and MyWriteFile take
//            no lock: their callers see to it that one page at a time is sent. Construction and
//            destruction need that no page is being sent. The trace may be written, and the flags
//            read and set, by any thread at any time.
// Locks      `lock` before `lockTrace`, never the reverse.
// Errors     Texts go to the trace only; operations answer a flag and the codes above. None throws
//            on its own. Memory that runs out is std::bad_alloc, but not from CloseCOMPort and the
//            trace; OpenCOMPort has then given the port back.
class CCOMHdl {
 public:
    // Probes COM1 to COM9, and starts an empty trace if tracing is wanted. dbName is copied.
    explicit CCOMHdl(const char* dbName);
    ~CCOMHdl();
    CCOMHdl(const CCOMHdl&) = delete;
    CCOMHdl& operator=(const CCOMHdl&) = delete;

    // Whether a handler is constructed.
    static bool IsRunning() { return InitOK; }

    static void Lock() { lock.Lock(); }
    static void Unlock() { lock.Unlock(); }
    static void LockTrace() { lockTrace.Lock(); }
    static void UnlockTrace() { lockTrace.Unlock(); }

    // --- Look-ups over the port table, which they read without a lock.

    // The handle of the port called so ("COM 3"), or all ones.
    unsigned long GetCOMPortId(CString name);

    // The settings of the port called so, each ended by ';', or an empty text. Mind the order:
    // baud; parity; data; stop; flow, then for a modem port init; reset; dialPrefix;
    // activityPrompt and for each SMS service protocol; parity; data; stop; number.
    CString GetCOMPortSetting(CString name);

    // Always an empty text.
    CString LoadCOMPortSetting(CString name);

    // --- A page, step by step.

    // Takes a port and sets its line for the protocol. port: empty or A... for any free modem port,
    // or the port's name. Returns the port's index, or one of OpenResult. The port stays taken when
    // its opening fails, until the handler is made anew.
    int OpenCOMPort(CString port, unsigned char protocol);

    // Opens the device ("COM3" or "COM3:") and keeps its handle in ComHandle. 0 = opened, otherwise
    // the error code.
    int OpenComm(CString device, int, int);

    bool InitModem(int port, int* error);

    // Dials the protocol's dial command followed by number, and waits for the call to be up, or
    // only for the modem's OK. An unanswered call succeeds all the same when text is empty.
    bool Dial(int port, CString number, unsigned char protocol, CString text, bool waitForConnect,
              int* error);

    // Carries the message over the connected call. Neither dials nor hangs up.
    bool TransMsg(int port, CString number, CString message, unsigned char protocol, int* result);

    // Hangs up. Whether the modem confirmed its reset.
    bool ResetModem(int port);

    // Gives the port back. Whether its device could be closed.
    bool CloseCOMPort(int port);

    // Reads what the far end says until it has said `expected` (true), has given one of the modem's
    // failure answers (false, with MainModemError set), or timeoutMs have passed (false; 0 still
    // reads once). Anything at all counts as an empty expected text. The last argument has no
    // effect.
    bool WaitString(HANDLE handle, CString expected, DWORD timeoutMs, bool);

    // Traces the bytes in printable form and writes them.
    static bool MyWriteFile(HANDLE handle, const void* buffer, DWORD length, DWORD* written,
                            OVERLAPPED* overlapped);

    // Clears the line's error state, after a failed write.
    static bool GetCOMPortError(HANDLE handle);

    // --- NTT pagers: text as pairs of digits.

    static CString FormatNTT(CString text);
    static CString NTTChar(char c);

    // --- The trace, one line a call. Never reports a failure: what can't be written is lost. The
    // --- second form makes a text of the characters only if it is written.
    static void WritePageProtocolEntry(CString text);
    static void WritePageProtocolEntry(const char* text);

    // --- SMS protocols. The rows stay the handler's.

    // The row of exactly this name, or null.
    static SmsProtocol* GetSmsProtocol(const char* name);
    // Stores the first row's address in *table and returns how many there are: 2.
    static int GetSmsProtocols(SmsProtocol** table);

    // --- Defaults. Public for whoever explains a page without opening a line.

    // Sets the texts below; the constructor does.
    static void SetModemStrings();
    // Gives a port without a modem of its own the default modem strings. False: no memory.
    static bool SetDefaultModemStrings(ComPort& port);

    // --- How long each step takes when all its waits are taken in full, in milliseconds, with the
    // --- waits below. Each stands beside the step.
    static DWORD LongestOpenMs();
    static DWORD LongestInitMs();
    static DWORD LongestDialMs();
    static DWORD LongestTransferMs();  // of any dialogue
    static DWORD LongestResetMs();

    // --- State of the process, as the constructor sets it.

    static constexpr int kMaxPorts = 9;
    static constexpr int32_t kTracingOn = 5766;
    static constexpr int32_t kTracingOff = -1;

    static CCOMHdl* COMHdl;                            // the live handler
    static std::unique_ptr<char[]> m_dB;               // database name
    static std::unique_ptr<CDB_ComPorts> pDBComPorts;  // the ports' table
    static ComPort* COMPortTable[kMaxPorts];           // usable ports; null ends the list
    static std::atomic<bool> InitOK;                   // a handler is constructed
    static HANDLE ComHandle;                           // guarded by lock: the latest opening
    static DWORD ComWriteBytes;                        // bytes written by the latest write

    // Modem commands and dialogue texts.
    static CString MStrInit;
    static CString MStrReset;
    static CString MStrDialPrefix;
    static CString MStrActivityPrompt;
    static CString MStrS1Protocol;
    static CString MStrS1Number;
    static CString MStrS2Protocol;
    static CString MStrS2Number;
    static CString MSms1_80;
    static CString MSms2_80;
    static CString MStrCR;

    // Modem answers.
    static CString MStrOK;
    static CString MStrConnect;
    static CString MStrBusy;
    static CString MStrNoDial;
    static CString MStrNoAnswer;
    static CString MStrNoCarrier;
    static CString MStrError;

    static CString COMStrDefault;  // line settings: baud, parity, data bits, stop bits, flow

    // Waits, in milliseconds.
    static DWORD MDialTimeOut;
    static DWORD MTAPReadyTimeOut;
    static DWORD MUCPReadyTimeOut;
    static DWORD MPagerReadyTimeOut;
    static DWORD MUCPWaitForHandShake;
    static DWORD MNTTWaitForAnswer;
    static DWORD MNTTWaitForDial;
    static std::atomic<DWORD> MPeekWait;  // between two reads, and for each trace call while off

    static std::atomic<bool> ModemTest;        // a test page is being sent
    static std::atomic<bool> MainModemError;   // a failure answer was heard; its readers clear it
    static std::atomic<int32_t> PageProtocol;  // kTracingOn, or anything else for off

    static SmsProtocol SmsTable[2];

    static CCriticalSection lock;       // guards the port table, the port operations and `trace`
    static CString trace;               // guarded by lock: the trace text being made
    static CCriticalSection lockTrace;  // guards the trace file

 private:
    // Parts of the construction, in this order, after SetModemStrings.
    static void SetTimeOuts();
    void ExploreCOMPorts();
    static void StartTrace();
    static void FillSmsTable();

    static void FreeCOMPorts();
    static void ForgetHandler();  // of the construction, when it ends early or is over

    static int COMPortCount();  // entries of COMPortTable before the first null one
    static int FindCOMPort(const CString& name);  // its index, or -1

    // Parts of OpenCOMPort, in this order. Require: lock held.
    static int ChooseCOMPort(const CString& port);  // an index, now in use, or an OpenResult
    static int ChooseAnyCOMPort();
    static int ChooseNamedCOMPort(const CString& name);
    int OpenTakenPort(int index, unsigned char protocol);          // the index or an OpenResult
    int OpenDevice(const CString& device);                         // 0 or an OpenResult
    static int SetLine(const CString& mode, const CString& flow);  // 0 or an OpenResult

    // Writes all of it; false after a failure, whose error state is then cleared.
    static bool Send(HANDLE handle, const CString& bytes);

    // One transfer each. Require: lock held.
    bool Transfer(const ComPort& port, const CString& number, const CString& message,
                  unsigned char protocol);
    bool TransferSms(HANDLE handle, const CString& protocolName, const CString& number,
                     const CString& text);
    bool TransferTAP(HANDLE handle, const CString& number, const CString& text);
    bool KnockTAP(HANDLE handle);
    bool TransferUCP(HANDLE handle, const CString& number, const CString& text);
    bool TransferPlain(const ComPort& port, const CString& number, const CString& message);
    bool TransferNTT(HANDLE handle, const CString& message);
    static DWORD LongestTAPMs();
    static DWORD LongestUCPMs();
    static DWORD LongestPlainMs();
    static DWORD LongestNTTMs();
    static bool TransferFails(const char* reason);  // traces it and returns false

    CString m_modemSaid;  // during the latest wait for an answer
};

#endif
