// The faulty line.
#include "tests/proof/faulty_line.h"

#include <utility>

namespace proof {

using namespace std::chrono_literals;
using pagersim::Milliseconds;

void FaultyLine::Plan(LineFault fault, size_t nth) {
    fault_ = fault;
    nth_ = nth;
    happened_ = false;
    sent_.clear();
    heard_.clear();
}

void FaultyLine::Opened(pagersim::Wire& wire) {
    wire_ = &wire;
    behind_->Opened(*this);
}

// The nth byte of all: dropped, or with some of its bits turned.
std::string FaultyLine::Damaged(std::string_view bytes, size_t before, LineFault drops,
                                LineFault garbles) {
    std::string damaged(bytes);
    const bool within = nth_ > before && nth_ <= before + bytes.size();
    if (!within || (fault_ != drops && fault_ != garbles)) {
        return damaged;
    }
    happened_ = true;
    const size_t place = nth_ - before - 1;
    if (fault_ == drops) {
        return damaged.erase(place, 1);
    }
    constexpr unsigned char kSomeBits = 0x16;
    damaged[place] = static_cast<char>(static_cast<unsigned char>(damaged[place]) ^ kSomeBits);
    return damaged;
}

void FaultyLine::Heard(std::string_view bytes) {
    const size_t before = sent_.size();
    sent_ += bytes;
    const std::string arrives =
        Damaged(bytes, before, LineFault::kDropsSent, LineFault::kGarblesSent);
    const bool goes = (fault_ == LineFault::kVanishes || fault_ == LineFault::kGoesFor3Hours) &&
                      nth_ > before && nth_ <= before + bytes.size();
    if (goes) {
        behind_->Heard(std::string_view(arrives).substr(0, nth_ - before));
        Go();
    } else if (!arrives.empty()) {
        behind_->Heard(arrives);
    }
}

void FaultyLine::Go() {
    happened_ = true;
    behind_->Closed();
    if (fault_ == LineFault::kVanishes) {
        wire_->Vanish();
        return;
    }
    plug_out();
    wire_->At(3h, [this] { plug_in(); });
}

void FaultyLine::Send(std::string_view bytes) {
    const size_t before = heard_.size();
    heard_ += bytes;
    const std::string arrives =
        Damaged(bytes, before, LineFault::kDropsHeard, LineFault::kGarblesHeard);
    const bool splits =
        fault_ == LineFault::kSplits && nth_ >= before && nth_ < before + bytes.size();
    if (!splits) {
        wire_->Send(arrives);
        return;
    }
    happened_ = true;
    const size_t place = nth_ - before;
    wire_->Send(std::string_view(arrives).substr(0, place));
    wire_->At(30ms, [this, rest = arrives.substr(place)] { wire_->Send(rest); });
}

void FaultyLine::At(Milliseconds after, std::function<void()> what) {
    wire_->At(after, std::move(what));
}

}  // namespace proof
