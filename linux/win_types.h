// The types and constants of the Win32-named calls in win_system.h and win_serial.h.
//
// Widths are fixed, whatever the word size; handles are pointer-sized. Only what the callers of
// this system use is here.
#ifndef PAGERFWD_LINUX_WIN_TYPES_H
#define PAGERFWD_LINUX_WIN_TYPES_H

#include <cstdint>

using BYTE = uint8_t;
using WORD = uint16_t;
using DWORD = uint32_t;
using BOOL = int32_t;  // nonzero = success

using HANDLE = void*;
using HKEY = void*;

// NOLINTBEGIN(performance-no-int-to-ptr): handle values that are numbers by definition.
inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(intptr_t{-1});
inline const HKEY HKEY_LOCAL_MACHINE = reinterpret_cast<HKEY>(uintptr_t{0x80000002});
// NOLINTEND(performance-no-int-to-ptr)

// Nothing overlaps here: the argument of this type is ignored, callers pass null.
struct OVERLAPPED;

// CreateFile: accepted, without effect.
constexpr DWORD GENERIC_READ = 0x80000000;
constexpr DWORD GENERIC_WRITE = 0x40000000;
constexpr DWORD OPEN_EXISTING = 3;

// SetCommMask, GetCommMask: a character was received.
constexpr DWORD EV_RXCHAR = 1;

// PurgeComm: accepted, without effect.
constexpr DWORD PURGE_TXABORT = 1;
constexpr DWORD PURGE_RXABORT = 2;

// DCB::Parity; the index is also that of the parity letter in "noems".
constexpr BYTE NOPARITY = 0;
constexpr BYTE ODDPARITY = 1;
constexpr BYTE EVENPARITY = 2;
constexpr BYTE MARKPARITY = 3;
constexpr BYTE SPACEPARITY = 4;

// DCB::StopBits
constexpr BYTE ONESTOPBIT = 0;
constexpr BYTE TWOSTOPBITS = 2;

// DCB::fDtrControl
constexpr DWORD DTR_CONTROL_ENABLE = 1;

// The device-control block, in its published layout of 28 bytes. The serial calls fill and read
// DCBlength, BaudRate, fParity, ByteSize, Parity and StopBits; a caller may set the others, which
// then have no effect.
struct DCB {
    DWORD DCBlength;  // 28
    DWORD BaudRate;   // bit/s
    DWORD fBinary : 1;
    DWORD fParity : 1;  // 1 = Parity is not NOPARITY
    DWORD fOutxCtsFlow : 1;
    DWORD fOutxDsrFlow : 1;
    DWORD fDtrControl : 2;
    DWORD fDsrSensitivity : 1;
    DWORD fTXContinueOnXoff : 1;
    DWORD fOutX : 1;
    DWORD fInX : 1;
    DWORD fErrorChar : 1;
    DWORD fNull : 1;
    DWORD fRtsControl : 2;
    DWORD fAbortOnError : 1;
    DWORD fDummy2 : 17;
    WORD wReserved;
    WORD XonLim;
    WORD XoffLim;
    BYTE ByteSize;  // data bits, 5 to 8
    BYTE Parity;
    BYTE StopBits;
    char XonChar;
    char XoffChar;
    char ErrorChar;
    char EofChar;
    char EvtChar;
    WORD wReserved1;
};
static_assert(sizeof(DCB) == 28, "the published layout");

// The status block, in its published layout of 12 bytes; only cbInQue is ever filled.
struct COMSTAT {
    DWORD fCtsHold : 1;
    DWORD fDsrHold : 1;
    DWORD fRlsdHold : 1;
    DWORD fXoffHold : 1;
    DWORD fXoffSent : 1;
    DWORD fEof : 1;
    DWORD fTxim : 1;
    DWORD fReserved : 25;
    DWORD cbInQue;  // received bytes that wait to be read
    DWORD cbOutQue;
};
static_assert(sizeof(COMSTAT) == 12, "the published layout");

#endif
