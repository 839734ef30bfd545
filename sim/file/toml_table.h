// One table of a TOML file, read key by key, with every mistake told by file and line.
#ifndef PAGERFWD_SIM_FILE_TOML_TABLE_H
#define PAGERFWD_SIM_FILE_TOML_TABLE_H

#include <array>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "sim/far_end.h"
#include "support/toml.h"

namespace pagersim {

// "exchange.toml:12: guard_ms must be 0 or more; write for example guard_ms = 500".
using Mistakes = std::vector<std::string>;

// Every Take leaves its target alone when the key is missing; a key that is there but wrong becomes
// a mistake. Finish() then makes mistakes of the keys that nobody took.
class TomlTable {
 public:
    // All references outlive this. `what` names the table in words: "[[line]]".
    TomlTable(const toml::table& table, std::string file, std::string what, Mistakes& mistakes)
        : table_(table), file_(std::move(file)), what_(std::move(what)), mistakes_(mistakes) {}

    bool Has(std::string_view key) const { return table_.contains(key); }
    void Require(std::string_view key, std::string_view example);

    void Take(std::string_view key, bool& target);
    bool Take(std::string_view key, std::string& target);  // true: the key is there, and a text
    void Take(std::string_view key, std::vector<std::string>& target);
    void Take(std::string_view key, Milliseconds& target);  // a whole number of milliseconds

    template <typename Count>
    void TakeCount(std::string_view key, Count& target, std::int64_t least = 0,
                   std::int64_t most = std::numeric_limits<std::int32_t>::max()) {
        if (const auto value = Number(key, least, most)) {
            target = static_cast<Count>(*value);
        }
    }

    template <typename Value>
    void TakeChoice(std::string_view key, Value& target,
                    std::initializer_list<std::pair<std::string_view, Value>> choices) {
        std::string word;
        if (!Take(key, word)) {
            return;
        }
        std::string list;
        for (const auto& [known, value] : choices) {
            if (word == known) {
                target = value;
                return;
            }
            list += (list.empty() ? "\"" : ", \"") + std::string(known) + "\"";
        }
        Mistake(key, "must be one of " + list);
    }

    // A mistake in the value of `key`, or, without one, in the table.
    void Mistake(std::string_view key, const std::string& what_and_remedy);
    void Finish();

 private:
    const toml::node* Find(std::string_view key);
    std::optional<std::int64_t> Number(std::string_view key, std::int64_t least, std::int64_t most);
    void Tell(const toml::node& where, const std::string& what);
    void TellUnknown(const toml::node& where, const std::string& name);

    const toml::table& table_;
    const std::string file_, what_;
    Mistakes& mistakes_;
    std::vector<std::string> asked_for_;
};

}  // namespace pagersim

#endif
