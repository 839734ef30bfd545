// Templates. Tested by tests/unit/host/alertmanager_test.cpp, tests/fuzz/alertmanager.cpp.
#include "host/intake/template.h"

#include <algorithm>
#include <utility>

namespace host {

Template::Template(std::string_view text) {
    std::string plain;
    while (!text.empty()) {
        const char c = text.front();
        if ((c == '{' || c == '}') && text.size() > 1 && text[1] == c) {
            plain += c;
            text.remove_prefix(2);
        } else if (c == '}') {
            throw BadTemplate("a } that closes nothing; a brace itself is written }}");
        } else if (c == '{') {
            const size_t end = text.find('}');
            if (end == std::string_view::npos) {
                throw BadTemplate("a { that nothing closes; a brace itself is written {{");
            }
            parts_.push_back({std::exchange(plain, ""), {}});
            AddPlace(text.substr(1, end - 1));
            text.remove_prefix(end + 1);
        } else {
            plain += c;
            text.remove_prefix(1);
        }
    }
    parts_.push_back({plain, {}});
}

void Template::AddPlace(std::string_view place) {
    Part part;
    std::string_view rest = place;
    do {
        const std::string_view word = rest.substr(0, rest.find('|'));
        rest.remove_prefix(std::min(word.size() + 1, rest.size()));
        const bool is_text = word.size() >= 2 && word.front() == '\'' && word.back() == '\'';
        if (word.empty() || (is_text && !rest.empty()) || word.find('{') != std::string::npos) {
            throw BadTemplate("{" + std::string(place) + "} is no place");
        }
        if (is_text) {
            part.text = word.substr(1, word.size() - 2);
        } else {
            part.names.emplace_back(word);
        }
    } while (!rest.empty());
    parts_.push_back(std::move(part));
}

std::vector<std::string> Template::Names() const {
    std::vector<std::string> names;
    for (const Part& part : parts_) {
        names.insert(names.end(), part.names.begin(), part.names.end());
    }
    return names;
}

std::string Template::Fill(const Values& values) const {
    std::string filled;
    for (const Part& part : parts_) {
        std::string text = part.text;
        for (const std::string& name : part.names) {
            const std::optional<std::string> value = values(name);
            if (value && !value->empty()) {
                text = *value;
                break;
            }
        }
        filled += text;
    }
    return filled;
}

}  // namespace host
