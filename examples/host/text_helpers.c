/* Text helpers for texts of one byte a character. Not by isspace and the like: those ask the
 * locale. */
#include <pagerfwd/text_helpers.h>
#include <string.h>

static char* digits_of(unsigned long value, int radix, int negative, char* buffer) {
    char turned[65];
    int count = 0, length = 0;
    do {
        turned[count++] = "0123456789abcdefghijklmnopqrstuvwxyz"[value % (unsigned)radix];
        value /= (unsigned)radix;
    } while (value != 0);
    if (negative) {
        buffer[length++] = '-';
    }
    while (count > 0) {
        buffer[length++] = turned[--count];
    }
    buffer[length] = '\0';
    return buffer;
}

/* Only decimal texts have a sign; other radices show the bits. */
char* _itoa(int value, char* buffer, int radix) {
    const int negative = value < 0 && radix == 10;
    return digits_of(negative ? 0u - (unsigned)value : (unsigned)value, radix, negative, buffer);
}

char* _ltoa(long value, char* buffer, int radix) {
    const int negative = value < 0 && radix == 10;
    return digits_of(negative ? 0ul - (unsigned long)value : (unsigned long)value, radix, negative,
                     buffer);
}

unsigned char* _mbsinc(const unsigned char* text) {
    return (unsigned char*)text + 1;
}

size_t _mbclen(const unsigned char* text) {
    (void)text;
    return 1;
}

unsigned char* _mbschr(const unsigned char* text, unsigned int character) {
    return (unsigned char*)strchr((const char*)text, (int)character);
}

unsigned char* _mbsrchr(const unsigned char* text, unsigned int character) {
    return (unsigned char*)strrchr((const char*)text, (int)character);
}

unsigned char* _mbsstr(const unsigned char* text, const unsigned char* wanted) {
    return (unsigned char*)strstr((const char*)text, (const char*)wanted);
}

int _mbscmp(const unsigned char* left, const unsigned char* right) {
    return strcmp((const char*)left, (const char*)right);
}

size_t _mbslen(const unsigned char* text) {
    return strlen((const char*)text);
}

unsigned int _mbctoupper(unsigned int character) {
    return character >= 'a' && character <= 'z' ? character - 'a' + 'A' : character;
}

int _ismbcspace(unsigned int character) {
    return character == ' ' || (character >= '\t' && character <= '\r');
}

int _ismbcdigit(unsigned int character) {
    return character >= '0' && character <= '9';
}
