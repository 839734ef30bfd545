// How a line is set for a protocol: device name, mode text, control block.
#ifndef PAGERFWD_MODEM_LINE_MODE_H
#define PAGERFWD_MODEM_LINE_MODE_H

#include "linux/win_types.h"
#include "modem/COMHdl.h"

// The device of the port called so: "COM3:" for "COM 3". Empty when the name has no digit 1 to 9.
CString DeviceName(const CString& portName);

// device, then baud, parity letter, data bits and stop bits: "COM3:2400,n,8,1". A protocol code
// that is none of PagerProtocol has no settings, its mode ends behind the baud: "COM3:2400,".
CString ModeText(const CString& device, const ComPort& port, unsigned char protocol);

// The same for people: "2400 / 8 / None / 1 (None)".
CString SettingsText(const ComPort& port, unsigned char protocol);

// Sets the block's flow control, and nothing else: by CTS and DSR for H..., by XON and XOFF for
// X..., none for "None", an empty text or any other word.
void SetFlowControl(DCB& block, const CString& flow);

#endif
