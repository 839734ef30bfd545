// Win32-named calls for one serial port each, on the line driver of tty.h.
//
// Ownership  A handle points to a record of this layer, which lives to the end of the process:
//            after CloseHandle it stays valid and stands for no line.
// Threads    No locks of its own but for the making of handles; one thread at a time uses a handle.
// Errors     Functions return 1 for success and 0 for failure. With a null or invalid handle every
//            call fails and does nothing else; after CloseHandle a call does what the driver does
//            without a line: nothing is sent or received. win_errno is set only where said here.
#ifndef PAGERFWD_LINUX_WIN_SERIAL_H
#define PAGERFWD_LINUX_WIN_SERIAL_H

#include "linux/win_system.h"
#include "linux/win_types.h"

// Values of win_errno.
constexpr int32_t IE_BADID = -1;      // CreateFile: no such port, or it can't be opened
constexpr int32_t IE_BYTESIZE = -11;  // BuildCommDCB: data bits outside 5 to 8
constexpr int32_t IE_BAUDRATE = -12;  // BuildCommDCB: below 300 bit/s

// The parity letters, in the order of DCB::Parity.
extern const char abbr_parity[];  // "noems"

// Opens the line that the first digit in name stands for: COM1 is /dev/ttyS0, COM9 /dev/ttyS8. The
// other arguments are ignored. Returns INVALID_HANDLE_VALUE on failure, with IE_BADID in win_errno.
HANDLE CreateFile(const char* name, DWORD access = 0, DWORD share = 0, void* security = nullptr,
                  DWORD disposition = 0, DWORD attributes = 0, HANDLE pattern = nullptr);

// Gives the line back, with the settings it had before. Returns 1, also when closed already.
BOOL CloseHandle(HANDLE handle);

// Reads a mode, as in "COM1:2400,n,8,1": port, baud rate, parity letter of abbr_parity in either
// case, data bits (8 when empty), stop bits; what follows is ignored. On success the whole block is
// overwritten and win_errno is as before. On failure the block is untouched.
BOOL BuildCommDCB(const char* mode, DCB* dcb);

// Sets the line: raw, hang-up on close, hardware flow control. Fails for a rate that the driver
// doesn't know, and for mark and space parity.
BOOL SetCommState(HANDLE handle, const DCB* dcb);

// Sends; *written is how many bytes went out. A short count is a success.
BOOL WriteFile(HANDLE handle, const void* buffer, DWORD length, DWORD* written,
               OVERLAPPED* overlapped);

// Receives what is there, without waiting; *read is how many bytes came, 0 for none.
BOOL ReadFile(HANDLE handle, void* buffer, DWORD length, DWORD* read, OVERLAPPED* overlapped);

// Sets *errors to 0 and, where status is given, its cbInQue to the bytes that wait to be read.
BOOL ClearCommError(HANDLE handle, DWORD* errors, COMSTAT* status);

// Sets which events GetCommMask reports. Only EV_RXCHAR ever occurs.
BOOL SetCommMask(HANDLE handle, DWORD mask);

// Says what is the case now, without waiting: EV_RXCHAR when asked for and bytes wait, else 0.
BOOL GetCommMask(HANDLE handle, DWORD* events);

// Discards input until none has come for a second, or it has come for half a minute. flags is
// ignored.
BOOL PurgeComm(HANDLE handle, DWORD flags);
constexpr DWORD kLongestPurgeMs = 31 * 1000;  // that half minute, and the quiet second

#endif
