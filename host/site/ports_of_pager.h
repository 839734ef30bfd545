// Over which ports a pager can be paged.
#ifndef PAGERFWD_HOST_SITE_PORTS_OF_PAGER_H
#define PAGERFWD_HOST_SITE_PORTS_OF_PAGER_H

#include <vector>

#include "host/site/site.h"

namespace host {

// The port that the pager names or, where it names none, every one that can dial for its type: it
// has a modem, and a dial command for the type, and is the node's that the pager names, if it names
// one. Empty: the pager can't be reached.
std::vector<const Port*> PortsOf(const Site& site, const Pager& pager);

// The dial command that the pager's type is dialled by over this port; empty where there is none.
const SaidText& DialFor(const Port& port, const Pager& pager);

// The SMS service of the port that the pager is paged by; null for a pager of another type.
const SmsService* ServiceOf(const Port& port, const Pager& pager);

// The pagers that have only one port, in the order of the site: while its line is out, no other can
// have their pages.
struct OnlyPort {
    const Pager* pager;
    const Port* port;
};
std::vector<OnlyPort> PagersOfOnePort(const Site& site);

}  // namespace host

#endif
