// A file descriptor that is closed with its owner.
#ifndef PAGERFWD_SIM_DESCRIPTOR_H
#define PAGERFWD_SIM_DESCRIPTOR_H

#include <unistd.h>

#include <utility>

namespace pagersim {

class Descriptor {
 public:
    explicit Descriptor(int number = -1) : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0) {
            close(number_);
        }
    }
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }

    int Number() const { return number_; }  // -1: none

 private:
    int number_;
};

}  // namespace pagersim

#endif
