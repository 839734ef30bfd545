// What the dialogues send besides number and message, the same for every page.
#ifndef PAGERFWD_MODEM_DIALOGUE_TEXTS_H
#define PAGERFWD_MODEM_DIALOGUE_TEXTS_H

#include <string_view>

// TAP 1.8, appendix C. Kept: the zero byte goes out with the carriage return, and the line feed
// with the log-on; centres have always had them.
inline constexpr std::string_view kTapKnock{"\r\0", 2};
inline constexpr char kTapLogOn[] = "\x1bPG1\r\n";
inline constexpr char kTapEndOfTransmission[] = "\x04\r";

// To the yes/no question of a plain service, in German and in English.
inline constexpr char kPlainYes[] = "jy";

#endif
