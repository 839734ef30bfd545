// Heap copies of texts. Tested by tests/unit/tables/records_test.cpp.
#include "tables/owned_text.h"

#include <cstring>

char* CopyText(const char* text) {
    if (text == nullptr) {
        return nullptr;
    }
    const size_t size = std::strlen(text) + 1;
    return static_cast<char*>(std::memcpy(new char[size], text, size));
}
