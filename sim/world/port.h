// A serial line, as the program that opens its device sees it.
#ifndef PAGERFWD_SIM_WORLD_PORT_H
#define PAGERFWD_SIM_WORLD_PORT_H

#include <termios.h>

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "sim/world/line_set.h"
#include "sim/world/time.h"

namespace pagersim {

// A descriptor of an earlier connection has no part in this one: see `connection`, never 0, which
// Open gives with the descriptor and the others take.
//
// Threads    Every operation requires the world's lock.
class Port {
 public:
    virtual ~Port() = default;

    virtual int Open(int flags, uint32_t& connection) = 0;  // a descriptor, or -1 and errno
    virtual void Reopen(uint32_t connection) = 0;           // a descriptor was duplicated
    virtual void Close(uint32_t connection) = 0;
    virtual bool IsAlive(uint32_t connection) const = 0;
    virtual bool IsThere() const = 0;  // whether it can be opened

    virtual size_t Readable() const = 0;
    virtual size_t Take(char* buffer, size_t size) = 0;
    virtual void DropInput() = 0;
    virtual Micros LatestInput() const = 0;
    virtual void Write(std::string_view bytes) = 0;

    virtual termios Settings() const = 0;
    virtual void Set(const termios& settings) = 0;

    virtual LineSet Bit() const = 0;  // as waits name lines
};

}  // namespace pagersim

#endif
