// Who asks the web process, for what is measured there.
#ifndef PAGERFWD_BENCH_WEB_CLIENT_H
#define PAGERFWD_BENCH_WEB_CLIENT_H

#include <string>

#include "host/files/descriptor.h"

namespace bench {

// A connection to "web.sock". Throws std::runtime_error where nobody listens.
host::Descriptor ConnectToWeb();

// How long a page takes while nobody asks, and while 200 connections idle and somebody attacks.
void ComparePages(const std::string& program);

}  // namespace bench

#endif
