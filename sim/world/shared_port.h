// A serial line of a world that several processes share: the line itself is with the server.
#ifndef PAGERFWD_SIM_WORLD_SHARED_PORT_H
#define PAGERFWD_SIM_WORLD_SHARED_PORT_H

#include "sim/world/messages.h"
#include "sim/world/port.h"

namespace pagersim {

class SharedPort final : public Port {
 public:
    explicit SharedPort(int com) : com_(com) {}

    // What the latest answer said of the line. It holds as long as this process has the turn.
    void Note(const LineState& state) { state_ = state; }

    int Open(int flags, uint32_t& connection) override;
    void Reopen(uint32_t connection) override;
    void Close(uint32_t connection) override;
    bool IsAlive(uint32_t connection) const override { return connection == state_.connection; }
    bool IsThere() const override { return state_.there != 0; }
    size_t Readable() const override { return state_.readable; }
    size_t Take(char* buffer, size_t size) override;
    void DropInput() override;
    Micros LatestInput() const override { return Micros(state_.latest_input); }
    void Write(std::string_view bytes) override;
    termios Settings() const override;
    void Set(const termios& settings) override;
    LineSet Bit() const override { return SetOf(com_); }

 private:
    Request About(Question ask, uint32_t connection = 0, uint32_t number = 0) const;

    const int com_;
    LineState state_{};
    mutable termios settings_{};
    mutable uint32_t known_ = ~0U;  // to which count they belong
};

}  // namespace pagersim

#endif
