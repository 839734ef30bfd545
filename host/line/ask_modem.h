// Asks a modem whether it is there, without paging anybody.
#ifndef PAGERFWD_HOST_LINE_ASK_MODEM_H
#define PAGERFWD_HOST_LINE_ASK_MODEM_H

#include <string>

#include "host/devices/at_dialogue.h"
#include "host/lines/line_exit.h"

namespace host {

// How long a modem may take to answer a command that lets it do nothing.
inline constexpr AtDialogue::Milliseconds kModemAnswers{2000};

// Whether the modem answers, and in words from now on. It is asked more than once.
bool Wakes(AtDialogue& modem);

// Opens the device, says "AT", and waits for the answer: kDone, kNoDevice or kSilent. dial_tone:
// asks, too, whether the modem hears one, by taking the receiver off and dialling nobody: kNoTone.
// The process opens the line's device by its own name.
LineExit AskModem(const std::string& device, bool dial_tone);

}  // namespace host

#endif
