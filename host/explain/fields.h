// Cuts what the library built into annotated fields.
#ifndef PAGERFWD_HOST_EXPLAIN_FIELDS_H
#define PAGERFWD_HOST_EXPLAIN_FIELDS_H

#include <string>

#include "host/explain/explanation.h"
#include "linux/XString.h"

namespace host {

inline constexpr size_t kNttBytes = 14;  // of the text, as many as the dial command takes

// By length: a CString may hold zero bytes.
std::string BytesOf(const CString& text);

ExplainedStep TapBlockFields(const CString& number, const CString& text);
ExplainedStep UcpFrameFields(const CString& number, const CString& text);
ExplainedStep NttCommandFields(const CString& text);

}  // namespace host

#endif
