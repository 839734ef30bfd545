// The pseudo-terminals that a program finds open when it begins.
#ifndef PAGERFWD_SIM_WORLD_OPEN_TERMINALS_H
#define PAGERFWD_SIM_WORLD_OPEN_TERMINALS_H

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace pagersim {

struct OpenTerminal {
    int fd;
    uint32_t number;  // of /dev/pts
};

// At most a hundred.
std::vector<OpenTerminal> OpenTerminals();

// 7 from "/dev/pts/7". None: another name.
std::optional<uint32_t> TerminalNumber(std::string_view path);

}  // namespace pagersim

#endif
