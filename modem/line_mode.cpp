// How a line is set for a protocol.
// Tested by tests/unit/modem/line_mode_test.cpp.

#include "modem/line_mode.h"

#include "modem/protocol_group.h"

namespace {

constexpr char kXon = 17;
constexpr char kXoff = 19;
constexpr WORD kXonXoffLimit = 100;

}  // namespace

CString DeviceName(const CString& portName) {
    for (int i = 0; i < portName.GetLength(); ++i) {
        const char digit = portName[i];
        if (digit >= '1' && digit <= '9') {
            return "COM" + CString(digit, 1) + ":";
        }
    }
    return {};
}

CString ModeText(const CString& device, const ComPort& port, unsigned char protocol) {
    CString mode = device + port.baud + ",";
    if (const ProtocolGroup* group = FindProtocolGroup(protocol)) {
        const CString parityLetter = (port.*group->parity).Left(1);
        mode += parityLetter + "," + port.*group->data + "," + port.*group->stop;
    }
    return mode;
}

CString SettingsText(const ComPort& port, unsigned char protocol) {
    CString settings = port.baud + " / ";
    if (const ProtocolGroup* group = FindProtocolGroup(protocol)) {
        settings += port.*group->data + " / " + port.*group->parity + " / " + port.*group->stop;
    }
    return settings + " (" + port.flow + ")";
}

void SetFlowControl(DCB& block, const CString& flow) {
    if (flow == "None" || flow.IsEmpty()) {
        return;
    }
    switch (flow[0]) {
        case 'H':
        case 'h':
            block.fOutxCtsFlow = 1;
            block.fOutxDsrFlow = 1;
            break;
        case 'X':
        case 'x':
            block.fOutX = 1;
            block.fInX = 1;
            block.XonChar = kXon;
            block.XoffChar = kXoff;
            block.XonLim = kXonXoffLimit;
            block.XoffLim = kXonXoffLimit;
            break;
        default:
            break;
    }
}
