// Faults. Tested by tests/unit/sim/faults_test.cpp.
#include "sim/phone/faults.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace pagersim {

FaultyCentre::FaultyCentre(std::unique_ptr<Centre> centre, const Faults& faults)
    : centre_(std::move(centre)), faults_(faults) {}

void FaultyCentre::Answered(Call& call) {
    call_ = &call;
    centre_->Answered(*this);
}

void FaultyCentre::Heard(std::string_view bytes) {
    if (dropped_) {
        return;
    }
    const std::size_t left = BytesLeft(faults_.drop_after_hearing, bytes_heard_);
    const std::string_view arrives = bytes.substr(0, left);
    bytes_heard_ += arrives.size();
    centre_->Heard(Garbled(arrives));
    if (bytes.size() >= left) {
        DropCarrier("hearing " + std::to_string(bytes_heard_));
    }
}

void FaultyCentre::Dialled(std::string_view digits) {
    centre_->Dialled(digits);
}

void FaultyCentre::Ended() {
    centre_->Ended();
}

void FaultyCentre::Say(std::string_view bytes, Milliseconds after) {
    if (dropped_) {
        return;
    }
    if (faults_.silent_after && words_said_ >= *faults_.silent_after) {
        call_->Note("silent");
        return;
    }
    ++words_said_;
    const std::size_t left = BytesLeft(faults_.drop_after_saying, bytes_said_);
    const std::string_view leaves = bytes.substr(0, left);
    bytes_said_ += leaves.size();
    call_->Say(Garbled(leaves), after + faults_.late);
    if (bytes.size() >= left) {
        DropCarrier("saying " + std::to_string(bytes_said_));
    }
}

void FaultyCentre::At(Milliseconds after, std::function<void()> what) {
    call_->At(after, std::move(what));
}

std::string FaultyCentre::Garbled(std::string_view bytes) {
    std::string garbled(bytes);
    if (faults_.noise == 0) {
        return garbled;
    }
    for (char& c : garbled) {
        constexpr unsigned kSevenBits = 0x7f;
        if (noise_() % faults_.noise == 0) {
            c = static_cast<char>(static_cast<unsigned char>(c) ^ (1 + noise_() % kSevenBits));
        }
    }
    return garbled;
}

std::size_t FaultyCentre::BytesLeft(std::uint64_t limit, std::uint64_t so_far) const {
    constexpr std::size_t kNoLimit = std::numeric_limits<std::size_t>::max();
    return limit == 0 ? kNoLimit : static_cast<std::size_t>(limit - so_far);
}

void FaultyCentre::DropCarrier(const std::string& when) {
    dropped_ = true;
    call_->Note("the carrier is lost after " + when + " bytes");
    call_->HangUp();
}

}  // namespace pagersim
