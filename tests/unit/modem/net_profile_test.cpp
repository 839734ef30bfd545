// The settings below the vendor's registry root. The registry calls are replaced here, since on
// this platform they never find anything.

#include "modem/net_profile.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <string>

#include "linux/win_system.h"

namespace {

// A registry of one test: path and value name to text.
struct Registry {
    std::map<std::string, std::map<std::string, std::string>> keys;
    std::string opened;
    HKEY root = nullptr;
    int closes = 0;
};
Registry* registry = nullptr;

}  // namespace

extern "C" {
int32_t __real__Z10RegOpenKeyPvPKcPS_(HKEY key, const char* subKey, HKEY* result);
int32_t __wrap__Z10RegOpenKeyPvPKcPS_(HKEY key, const char* subKey, HKEY* result);
int32_t __wrap__Z11RegCloseKeyPv(HKEY key);
int32_t __wrap__Z15RegQueryValueExPvPKcPjS2_PhS2_(HKEY key, const char* name, DWORD* reserved,
                                                  DWORD* type, BYTE* data, DWORD* size);

int32_t __wrap__Z10RegOpenKeyPvPKcPS_(HKEY key, const char* subKey, HKEY* result) {
    if (registry == nullptr) {
        return __real__Z10RegOpenKeyPvPKcPS_(key, subKey, result);
    }
    registry->opened = subKey;
    registry->root = key;
    const auto found = registry->keys.find(subKey);
    if (found == registry->keys.end()) {
        return -1;
    }
    *result = &found->second;
    return 0;
}

int32_t __wrap__Z11RegCloseKeyPv(HKEY key) {
    EXPECT_NE(nullptr, key);
    ++registry->closes;
    return 0;
}

int32_t __wrap__Z15RegQueryValueExPvPKcPjS2_PhS2_(HKEY key, const char* name, DWORD*, DWORD*,
                                                  BYTE* data, DWORD* size) {
    auto& values = *static_cast<std::map<std::string, std::string>*>(key);
    const auto found = values.find(name);
    if (found == values.end()) {
        return 2;
    }
    // As the platform does: no terminator when the text fills the buffer.
    *size = static_cast<DWORD>(found->second.copy(reinterpret_cast<char*>(data), *size));
    return 0;
}
}

namespace {

class NetProfile : public ::testing::Test {
 protected:
    ~NetProfile() override { registry = nullptr; }

    void UseRegistry() { registry = &content; }

    Registry content;
};

TEST_F(NetProfile, ReadsAsTheDefaultOnThisPlatform) {
    EXPECT_EQ(SmGetNetProfileString("Modem", "Init", "AT"), "AT");
    EXPECT_EQ(SmGetNetProfileString("", "", ""), "");
    EXPECT_EQ(SmGetNetProfileString("Modem", "Protocol", "mine"), "mine");
    EXPECT_EQ(30, SmGetNetProfileInt("Modem", "Wait", 30));
    EXPECT_EQ(-5, SmGetNetProfileInt("Modem", "Protocol", -5));
}

TEST_F(NetProfile, LooksBelowTheRootOfTheVendorsProfile) {
    UseRegistry();
    EXPECT_EQ(SmGetNetProfileString("Software\\Modem", "Init", "AT"), "AT");
    EXPECT_EQ("0\\Software\\Modem", content.opened);
    EXPECT_EQ(HKEY_LOCAL_MACHINE, content.root);
    EXPECT_EQ(0, content.closes) << "nothing was opened";
}

TEST_F(NetProfile, ReadsAValue) {
    UseRegistry();
    content.keys["0\\Modem"] = {{"Init", "AT&F1"}, {"Wait", "45"}};
    EXPECT_EQ(SmGetNetProfileString("Modem", "Init", "AT"), "AT&F1");
    EXPECT_EQ(45, SmGetNetProfileInt("Modem", "Wait", 30));
    EXPECT_EQ(2, content.closes);
}

TEST_F(NetProfile, WithoutTheValueGivesTheDefaultAndClosesTheKey) {
    UseRegistry();
    content.keys["0\\Modem"] = {};
    EXPECT_EQ(SmGetNetProfileString("Modem", "Init", "AT"), "AT");
    EXPECT_EQ(30, SmGetNetProfileInt("Modem", "Wait", 30));
    EXPECT_EQ(2, content.closes);
}

TEST_F(NetProfile, TakesAnEmptyValueAsItIs) {
    UseRegistry();
    content.keys["0\\Modem"] = {{"Init", ""}};
    EXPECT_EQ(SmGetNetProfileString("Modem", "Init", "AT"), "");
    EXPECT_EQ(0, SmGetNetProfileInt("Modem", "Init", 30));
}

TEST_F(NetProfile, CutsAValueToItsBuffer) {
    UseRegistry();
    content.keys["0\\Modem"] = {{"Init", std::string(300, 'x')}};
    EXPECT_EQ(SmGetNetProfileString("Modem", "Init", "AT"), CString('x', 255));
}

TEST_F(NetProfile, ReadsNumbersAsFarAsTheyGo) {
    UseRegistry();
    content.keys["0\\Modem"] = {{"Wait", " 12 s"}, {"Text", "soon"}};
    EXPECT_EQ(12, SmGetNetProfileInt("Modem", "Wait", 30));
    EXPECT_EQ(0, SmGetNetProfileInt("Modem", "Text", 30));
}

}  // namespace
