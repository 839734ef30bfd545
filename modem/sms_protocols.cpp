// The two protocols that a port's SMS services can speak.
// Tested by tests/unit/modem/sms_protocols_test.cpp.

#include "modem/COMHdl.h"

SmsProtocol CCOMHdl::SmsTable[2];

// The numbers are ones that reach nobody: a forgotten default must not call a stranger.
void CCOMHdl::FillSmsTable() {
    struct Row {
        int32_t nr;
        const char* name;
        const char* dial;
    };
    constexpr Row kRows[] = {{1, "TAP", "ATDT5550101"}, {2, "UCP", "ATDT5550102"}};

    SmsProtocol* protocol = SmsTable;
    for (const Row& row : kRows) {
        protocol->nr = row.nr;
        protocol->name = row.name;
        protocol->parity = "None";
        protocol->stop = "1";
        protocol->data = "8";
        protocol->dial = row.dial;
        ++protocol;
    }
}

SmsProtocol* CCOMHdl::GetSmsProtocol(const char* name) {
    for (SmsProtocol& protocol : SmsTable) {
        if (protocol.name == name) {
            return &protocol;
        }
    }
    return nullptr;
}

int CCOMHdl::GetSmsProtocols(SmsProtocol** table) {
    *table = SmsTable;
    return static_cast<int>(sizeof SmsTable / sizeof SmsTable[0]);
}
