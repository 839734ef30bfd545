// Ports of a pager. Tested by tests/unit/host/ports_of_pager_test.cpp.
#include "host/site/ports_of_pager.h"

namespace host {
namespace {

bool IsOnNodeOf(const Port& port, const Pager& pager) {
    return pager.node.value.empty() || port.node.value == pager.node.value;
}

}  // namespace

std::vector<const Port*> PortsOf(const Site& site, const Pager& pager) {
    std::vector<const Port*> ports;
    for (const Port& port : site.ports) {
        if (pager.port.value.empty()
                ? port.modem.value && !DialFor(port, pager).value.empty() && IsOnNodeOf(port, pager)
                : port.name.value == pager.port.value) {
            ports.push_back(&port);
        }
    }
    return ports;
}

const SaidText& DialFor(const Port& port, const Pager& pager) {
    const SmsService* const service = ServiceOf(port, pager);
    return service == nullptr ? port.pager.dial : service->dial;
}

const SmsService* ServiceOf(const Port& port, const Pager& pager) {
    if (pager.type.value == "sms1") {
        return &port.sms1;
    }
    return pager.type.value == "sms2" ? &port.sms2 : nullptr;
}

std::vector<OnlyPort> PagersOfOnePort(const Site& site) {
    std::vector<OnlyPort> found;
    for (const Pager& pager : site.pagers) {
        const std::vector<const Port*> ports = PortsOf(site, pager);
        if (ports.size() == 1) {
            found.push_back({&pager, ports.front()});
        }
    }
    return found;
}

}  // namespace host
