/*
 * Text helpers: what a host must supply besides table_access.h, and in the same way.
 *
 * The library works on single-byte texts, so each of these behaves as its plain C counterpart: a
 * character is one byte. There is one exception, for pages to NTT pagers written in Shift_JIS:
 * where the host's texts are Shift_JIS, _mbclen answers 2 for a lead byte that a further byte
 * follows.
 *
 * Threads    All are called from any thread and keep no state.
 * Errors     None: every byte from 0 to 255 is a valid argument.
 */
#ifndef PAGERFWD_TEXT_HELPERS_H
#define PAGERFWD_TEXT_HELPERS_H

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The text of value in radix 2 to 36, written to buffer (33 bytes are enough), which is returned.
 */
char* _itoa(int value, char* buffer, int radix);
char* _ltoa(long value, char* buffer, int radix);

/* The character behind the one at text. */
unsigned char* _mbsinc(const unsigned char* text);

/* How many bytes the character at text has: 1, or 2 as said above. */
size_t _mbclen(const unsigned char* text);

/* As strchr, strrchr, strstr, strcmp and strlen. */
unsigned char* _mbschr(const unsigned char* text, unsigned int character);
unsigned char* _mbsrchr(const unsigned char* text, unsigned int character);
unsigned char* _mbsstr(const unsigned char* text, const unsigned char* wanted);
int _mbscmp(const unsigned char* left, const unsigned char* right);
size_t _mbslen(const unsigned char* text);

/* As toupper, isspace and isdigit, in the C locale. */
unsigned int _mbctoupper(unsigned int character);
int _ismbcspace(unsigned int character);
int _ismbcdigit(unsigned int character);

#ifdef __cplusplus
}
#endif

#endif
