// A message as its blocks bring it to a TAP centre.
#ifndef PAGERFWD_SIM_CENTRES_TAP_MESSAGE_H
#define PAGERFWD_SIM_CENTRES_TAP_MESSAGE_H

#include <string>
#include <vector>

#include "sim/centres/tap_block.h"

namespace pagersim {

class TapMessage {
 public:
    void Add(const TapBlock& block);

    bool IsWhole() const { return whole_; }
    bool IsEmpty() const { return fields_.empty(); }
    std::size_t Size() const;  // characters of all fields

    // Of a whole one: its pager, and its text. Where that has several fields, each is a line.
    bool HasText() const { return fields_.size() > 1; }
    const std::string& Pager() const { return fields_.front(); }
    std::string Text() const;

 private:
    std::vector<std::string> fields_;
    bool field_goes_on_ = false;
    bool whole_ = false;
};

}  // namespace pagersim

#endif
