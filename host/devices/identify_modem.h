// Asks what is at a serial device: "AT", and where that is answered by OK, "ATI".
#ifndef PAGERFWD_HOST_DEVICES_IDENTIFY_MODEM_H
#define PAGERFWD_HOST_DEVICES_IDENTIFY_MODEM_H

#include <string>

namespace host {

struct ModemAnswer {
    bool is_modem = false;  // it has answered OK
    std::string text;       // what it says of itself, in one line; or why it can't be asked
};

// With eight bits, no parity, at this speed (that of the port; 0: 9600), and no flow control. The
// settings of the line are put back. Takes three seconds, and half a minute where the device goes
// on sending; never waits for a carrier. Only for a device that nobody has: an answer would be lost
// to who waits for one, or dial.
ModemAnswer IdentifyModem(const std::string& device, int speed);

}  // namespace host

#endif
