// The pseudo-terminals that a program finds open when it begins.
#ifndef PAGERFWD_SIM_WORLD_OPEN_TERMINALS_H
#define PAGERFWD_SIM_WORLD_OPEN_TERMINALS_H

#include <cstdint>
#include <vector>

namespace pagersim {

struct OpenTerminal {
    int fd;
    uint32_t number;  // of /dev/pts
};

// At most a hundred.
std::vector<OpenTerminal> OpenTerminals();

// 7 from "/dev/pts/7". False: another name.
bool IsTerminalName(const char* path, uint32_t& number);

}  // namespace pagersim

#endif
