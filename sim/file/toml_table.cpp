// Reading TOML tables. Tested by tests/unit/sim/exchange_file_test.cpp.
#include "sim/file/toml_table.h"

#include <algorithm>

namespace pagersim {

const toml::node* TomlTable::Find(std::string_view key) {
    asked_for_.emplace_back(key);
    return table_.get(key);
}

void TomlTable::Require(std::string_view key, std::string_view example) {
    if (!Has(key)) {
        Tell(table_, what_ + " needs " + std::string(key) + "; write for example " +
                         std::string(key) + " = " + std::string(example));
    }
}

void TomlTable::Take(std::string_view key, bool& target) {
    const toml::node* const node = Find(key);
    if (node == nullptr) {
        return;
    }
    if (const auto value = node->value_exact<bool>()) {
        target = *value;
    } else {
        Mistake(key, "must be true or false");
    }
}

bool TomlTable::Take(std::string_view key, std::string& target) {
    const toml::node* const node = Find(key);
    if (node == nullptr) {
        return false;
    }
    const auto value = node->value_exact<std::string>();
    if (!value) {
        Mistake(key, "must be a text; put it between quotes");
    }
    target = value.value_or(target);
    return value.has_value();
}

void TomlTable::Take(std::string_view key, std::vector<std::string>& target) {
    const toml::node* const node = Find(key);
    if (node == nullptr) {
        return;
    }
    target.clear();
    const toml::array* const list = node->as_array();
    bool texts = list != nullptr;
    for (std::size_t i = 0; texts && i < list->size(); ++i) {
        const auto value = (*list)[i].value_exact<std::string>();
        texts = value.has_value();
        target.push_back(value.value_or(""));
    }
    if (!texts) {
        Mistake(key, "must be a list of texts; write for example [\"123\", \"124\"]");
    }
}

void TomlTable::Take(std::string_view key, Milliseconds& target) {
    constexpr std::int64_t kDay = 24LL * 60 * 60 * 1000;
    if (const auto value = Number(key, 0, kDay)) {
        target = Milliseconds{*value};
    }
}

std::optional<std::int64_t> TomlTable::Number(std::string_view key, std::int64_t least,
                                              std::int64_t most) {
    const toml::node* const node = Find(key);
    if (node == nullptr) {
        return std::nullopt;
    }
    const auto value = node->value_exact<std::int64_t>();
    if (value && *value >= least && *value <= most) {
        return value;
    }
    Mistake(key,
            "must be a whole number from " + std::to_string(least) + " to " + std::to_string(most));
    return std::nullopt;
}

void TomlTable::Mistake(std::string_view key, const std::string& what_and_remedy) {
    const toml::node* const node = table_.get(key);
    Tell(node != nullptr ? *node : table_,
         (key.empty() ? "" : std::string(key) + " ") + what_and_remedy);
}

void TomlTable::Finish() {
    for (const auto& [key, node] : table_) {
        const std::string name(key.str());
        if (std::find(asked_for_.begin(), asked_for_.end(), name) != asked_for_.end()) {
            continue;
        }
        TellUnknown(node, name);
    }
}

void TomlTable::TellUnknown(const toml::node& where, const std::string& name) {
    std::string known;
    for (const std::string& one : asked_for_) {
        known.append(known.empty() ? "" : ", ").append(one);
    }
    Tell(where, what_ + " knows no " + name + "; it knows " + known);
}

void TomlTable::Tell(const toml::node& where, const std::string& what) {
    mistakes_.push_back(file_ + ":" + std::to_string(where.source().begin.line) + ": " + what);
}

}  // namespace pagersim
