// Messages of several blocks. Tested by tests/unit/sim/tap_centre_test.cpp.
#include "sim/centres/tap_message.h"

namespace pagersim {

void TapMessage::Add(const TapBlock& block) {
    for (const std::string& field : block.fields) {
        if (field_goes_on_) {
            fields_.back() += field;
        } else {
            fields_.push_back(field);
        }
        field_goes_on_ = false;
    }
    field_goes_on_ = block.field_goes_on;
    whole_ = block.is_last;
}

std::size_t TapMessage::Size() const {
    std::size_t size = 0;
    for (const std::string& field : fields_) {
        size += field.size();
    }
    return size;
}

std::string TapMessage::Text() const {
    std::string text = fields_.at(1);
    for (std::size_t i = 2; i < fields_.size(); ++i) {
        text += '\n' + fields_[i];
    }
    return text;
}

}  // namespace pagersim
