// Texts of the records and of the table classes: heap copies of exactly the needed size.
#ifndef PAGERFWD_TABLES_OWNED_TEXT_H
#define PAGERFWD_TABLES_OWNED_TEXT_H

#include <memory>

using OwnedText = std::unique_ptr<char[]>;

// A copy of length plus one bytes, freed with array delete. A null text stays null.
char* CopyText(const char* text);

// The text itself, or the empty text for null.
inline const char* TextOrEmpty(const char* text) {
    return text != nullptr ? text : "";
}

#endif
