// Addresses that are let in: single ones, and networks.
#ifndef PAGERFWD_HOST_SNPP_ADDRESS_LIST_H
#define PAGERFWD_HOST_SNPP_ADDRESS_LIST_H

#include <string>
#include <vector>

namespace host {

class AddressList {
 public:
    // "192.0.2.7", "192.0.2.0/24", "2001:db8::/32". False: it is none.
    bool Add(const std::string& text);

    // Whether an address, such as "192.0.2.7", is one of them.
    bool Has(const std::string& address) const;

 private:
    struct Network {
        std::string bytes;  // 4 or 16
        size_t bits;
    };
    std::vector<Network> networks_;
};

}  // namespace host

#endif
