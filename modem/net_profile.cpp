// Per-installation settings below the registry root of the vendor profile.
// Tested by tests/unit/modem/net_profile_test.cpp.

#include "modem/net_profile.h"

#include <array>
#include <cstdlib>
#include <optional>

#include "linux/win_system.h"

namespace {

constexpr DWORD kTextSize = 256;

CString RootPath() {
    // One byte more than is passed: the reader stores a NUL at buffer[size].
    std::array<char, kTextSize + 1> root{};
    GetPrivateProfileString("General", "AppRegRoot", "0", root.data(), kTextSize, "KQVENDOR.INI");
    return root.data();
}

// Nothing when the key or the value can't be read.
std::optional<CString> Query(const CString& key, const CString& value) {
    HKEY opened = nullptr;
    if (RegOpenKey(HKEY_LOCAL_MACHINE, RootPath() + "\\" + key, &opened) != 0) {
        return std::nullopt;
    }
    std::array<BYTE, kTextSize> text{};
    DWORD size = kTextSize - 1;  // the last byte stays a NUL
    const bool read = RegQueryValueEx(opened, value, nullptr, nullptr, text.data(), &size) == 0;
    RegCloseKey(opened);
    if (!read) {
        return std::nullopt;
    }
    return CString(reinterpret_cast<const char*>(text.data()));
}

}  // namespace

CString SmGetNetProfileString(CString key, CString value, CString defaultText) {
    return Query(key, value).value_or(defaultText);
}

int SmGetNetProfileInt(CString key, CString value, int defaultNumber) {
    CString text;
    text.Format("%d", defaultNumber);
    text = Query(key, value).value_or(text);
    return static_cast<int>(strtol(text, nullptr, 10));
}
