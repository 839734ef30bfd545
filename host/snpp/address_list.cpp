// Address lists. Tested by tests/unit/host/snpp_dialogue_test.cpp.
#include "host/snpp/address_list.h"

#include <arpa/inet.h>

#include <algorithm>
#include <charconv>
#include <optional>
#include <string_view>

namespace host {
namespace {

constexpr size_t kByte = 8;

// Empty: it is no address.
std::string BytesOf(const std::string& address) {
    std::string bytes(sizeof(in_addr), '\0');
    if (inet_pton(AF_INET, address.c_str(), bytes.data()) == 1) {
        return bytes;
    }
    bytes.resize(sizeof(in6_addr));
    return inet_pton(AF_INET6, address.c_str(), bytes.data()) == 1 ? bytes : "";
}

std::optional<size_t> BitsIn(std::string_view text, size_t most) {
    size_t bits = 0;
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, bits);
    return read.ec == std::errc() && read.ptr == end && bits <= most ? std::optional<size_t>(bits)
                                                                     : std::nullopt;
}

// Whether the first so many bits are the same. Requires texts of one length.
bool AreAlike(const std::string& left, const std::string& right, size_t bits) {
    const size_t whole = bits / kByte;
    if (left.compare(0, whole, right, 0, whole) != 0) {
        return false;
    }
    const size_t rest = bits % kByte;
    const auto difference = static_cast<unsigned char>(rest == 0 ? 0 : left[whole] ^ right[whole]);
    return difference >> (kByte - rest) == 0;
}

}  // namespace

bool AddressList::Add(const std::string& text) {
    const size_t slash = std::min(text.find('/'), text.size());
    const std::string bytes = BytesOf(text.substr(0, slash));
    const size_t most = bytes.size() * kByte;
    const std::optional<size_t> bits =
        slash == text.size() ? most : BitsIn(std::string_view(text).substr(slash + 1), most);
    if (bytes.empty() || !bits) {
        return false;
    }
    networks_.push_back({bytes, *bits});
    return true;
}

bool AddressList::Has(const std::string& address) const {
    const std::string bytes = BytesOf(address);
    return std::any_of(networks_.begin(), networks_.end(), [&bytes](const Network& network) {
        return network.bytes.size() == bytes.size() && AreAlike(network.bytes, bytes, network.bits);
    });
}

}  // namespace host
