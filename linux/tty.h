// The line driver: one serial line on a POSIX terminal device. It knows nothing of modems.
//
// A lock file may keep other programs (dialers, terminal programs) off the line. Bytes are sent,
// received and drained with time limits; the settings that the line had before are put back at the
// close.
//
// Ownership  tty_open makes a line, tty_close frees it.
// Threads    No locks: one thread at a time uses a line. The traces (verbose, verbout) and the text
//            of mkprint are one each for the whole process.
// Errors     By result only. A null line is refused quietly: -1, 0, false or nothing done. Every
//            function that takes a line, but tty_receive, first looks for the line's magic number;
//            for another one it prints
//                Invalid magic: expect 1953790208 got <found> in ./tty.c:<line>
//            to standard error and carries on.
#ifndef PAGERFWD_LINUX_TTY_H
#define PAGERFWD_LINUX_TTY_H

#include <cstdint>

struct TtyLine;

// Opens a device read-write, such that it never becomes the controlling terminal and that a missing
// carrier can't hold up the open. Returns null when it can't be opened, is no terminal, or is
// locked by another process.
//
// lockPrefix   The lock file is the prefix followed directly by the device's last path component,
//              as in "/var/lock/LCK.." and ttyS0. Null: no lock file.
// lockOptions  Items separated by commas; each may be shortened, and an empty one is the first.
//              Where two contradict, the later holds; an unknown one is ignored. May be null.
//                ascii        the file holds the process number as text (default)
//                binary       ... as the four bytes of an int
//                lower upper  the name is converted to that case
//                sysv4        the name is made of device numbers: 005.004.064
//                timeout=N    a held lock is tried N more times; 1 s after each time
TtyLine* tty_open(const char* device, const char* lockPrefix, const char* lockOptions);

// Puts the original settings back, closes the device, removes the lock file. Returns 0.
int32_t tty_close(TtyLine* line);

// Closes the device, pauses, opens it again with the working settings. What was received but not
// yet fetched is lost. Returns whether the line is open.
bool tty_reopen(TtyLine* line, int32_t pauseMs);

// Makes a modem hang up: speed 0 for the pause, then the working settings, then tty_reopen with the
// same pause. Returns whether the line is open.
bool tty_hangup(TtyLine* line, int32_t pauseMs);

// The descriptor; -1 for a null line, or one that isn't open.
int32_t tty_fd(TtyLine* line);

// Sets the line: raw or with the usual line editing and signals, hang-up on close or not, rate (one
// of the usual from 300 to 460800 bit/s, but neither 600 nor 1800), data bits 5 to 8, stop bits 1
// or 2, parity 'n', 'e' or 'o'. Raw includes hardware flow control. Returns 0, or -1 for anything
// else, or when the device refuses.
int32_t tty_setup(TtyLine* line, bool raw, bool hangUpOnClose, int32_t rate, int32_t dataBits,
                  int32_t stopBits, char parity);

// Sends, waiting as long as the device takes no more; a vanished device (EIO) is opened again and
// the sending goes on. Returns the bytes written, which are fewer after any other error; -1 for a
// line that is null or not open, or a null buffer.
int32_t tty_send(TtyLine* line, const void* bytes, int32_t count);

// Waits for input, also when there is some already. Returns the bytes that wait to be fetched.
int32_t tty_data_ready(TtyLine* line, int32_t waitMs);

// Fetches what is there, without waiting. Returns the bytes copied, 0 for none; -1 for a line that
// is null or not open, or a null buffer.
int32_t tty_receive(TtyLine* line, void* buffer, int32_t size);

// Discard input until none comes within the wait; 0 or less discards what is there. A device that
// never pauses so long is left alone after kLongestDrainMs, counted from its first byte.
constexpr int32_t kLongestDrainMs = 30 * 1000;
void tty_mdrain(TtyLine* line, int32_t waitMs);
void tty_drain(TtyLine* line, int32_t waitSeconds);

// Pauses, whatever signals come; not at all for 0 or less.
void msleep(int32_t ms);

// Waits until the descriptor is readable. Returns 1 = readable (*waitMs is then the time left),
// 0 = not within the wait, negative = error.
int32_t data_ready(int32_t fd, int32_t* waitMs);

// A printable form: control codes by name, "<stx>"; bytes with the high bit as "<M-", the form of
// the low seven bits, ">". The text belongs to the driver and is overwritten by the next call.
const char* mkprint(const void* bytes, int32_t count);

// Cuts text at the first separator and returns what follows it and any blanks; null without one.
char* skipch(char* text, char separator);

// Traces, which go through verbout when verbose is 2 or more and verbout is set. Change them before
// lines are in use.
extern int32_t verbose;                          // 1
extern int (*verbout)(const char* format, ...);  // verbose_out
int verbose_out(const char* format, ...);        // as printf

#endif
