// The sum of a page's steps, all their waits taken in full.
// Tested by tests/unit/engine/longest_page_test.cpp.
#include "engine/longest_page.h"

#include "modem/COMHdl.h"

int LongestPageMs() {
    const DWORD stepsMs = CCOMHdl::LongestOpenMs() + CCOMHdl::LongestInitMs() +
                          CCOMHdl::LongestDialMs() + CCOMHdl::LongestTransferMs() +
                          CCOMHdl::LongestResetMs();
    return static_cast<int>(stepsMs) + kTablesAndTraceMs;
}
