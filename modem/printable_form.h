// How the trace shows bytes that go out on a line.
#ifndef PAGERFWD_MODEM_PRINTABLE_FORM_H
#define PAGERFWD_MODEM_PRINTABLE_FORM_H

#include <cstddef>
#include <string>

// Letters, digits, signs and the delete character stand for themselves; every other byte takes four
// characters: "< d>" for a carriage return, "<20>" for a blank, "<fff" for each byte from 128 up.
std::string PrintableForm(const void* bytes, size_t count);

#endif
