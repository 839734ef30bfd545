// An open file, closed with its object.
#ifndef PAGERFWD_HOST_FILES_DESCRIPTOR_H
#define PAGERFWD_HOST_FILES_DESCRIPTOR_H

#include <unistd.h>

#include <utility>

namespace host {

class Descriptor {
 public:
    Descriptor() = default;
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0) {
            close(number_);
        }
    }
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        Descriptor taken(std::move(other));
        std::swap(number_, taken.number_);
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool IsOpen() const { return number_ >= 0; }
    int Number() const { return number_; }

 private:
    int number_ = -1;
};

}  // namespace host

#endif
