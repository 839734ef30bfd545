// Reading of TOML by toml++. Tested by tests/unit/host/site_file_test.cpp.
#include "host/site/toml_reader.h"

#include <algorithm>
#include <utility>

#include "support/toml.h"

namespace host {
namespace {

int LineOf(const toml::source_region& region) {
    return static_cast<int>(region.begin.line);
}

const toml::table& EmptyTable() {
    static const toml::table empty;
    return empty;
}

}  // namespace

struct TomlReader::State {
    const toml::table* table;
    int line;
    std::string name;  // "port.pager"; empty for the whole document
    Findings* findings;
    std::set<std::string, std::less<>> asked;

    const toml::node* Find(const char* key) {
        asked.insert(key);
        return table->get(key);
    }

    std::string NameOf(const char* key) const { return name.empty() ? key : name + "." + key; }
    std::string Where() const { return name.empty() ? "at the top of the file" : "in " + name; }
};

struct TomlDocument::State {
    toml::table table;
    Findings* findings;
    bool is_toml = true;
};

TomlDocument::TomlDocument(std::string_view text, Findings& findings)
    : state_(std::make_unique<State>()) {
    state_->findings = &findings;
    toml::parse_result parsed = toml::parse(text);
    if (parsed.succeeded()) {
        state_->table = std::move(parsed).table();
        return;
    }
    const toml::parse_error& error = parsed.error();
    state_->is_toml = false;
    findings.Error(LineOf(error.source()), std::string(error.description()),
                   "The file can't be read beyond this line.",
                   "Texts stand between double quotes, tables begin with [[port]].");
}

TomlDocument::~TomlDocument() = default;

bool TomlDocument::IsToml() const {
    return state_->is_toml;
}

TomlReader TomlDocument::Root() {
    return TomlReader(std::make_unique<TomlReader::State>(
        TomlReader::State{&state_->table, 1, "", state_->findings, {}}));
}

TomlReader::TomlReader(std::unique_ptr<State> state) : state_(std::move(state)) {}
TomlReader::TomlReader(TomlReader&& other) noexcept = default;

TomlReader::~TomlReader() {
    if (state_ == nullptr) {
        return;
    }
    for (const auto& [key, value] : *state_->table) {
        if (state_->asked.count(key.str()) == 0) {
            state_->findings->Error(
                LineOf(key.source()),
                "unknown key \"" + std::string(key.str()) + "\" " + state_->Where(),
                "It would have no effect.", "Mend the spelling, or take the line out.");
        }
    }
}

int TomlReader::Line() const {
    return state_->line;
}

void TomlReader::ReportKind(int line, const char* key, const char* kind) const {
    state_->findings->Error(line, state_->NameOf(key) + " has to be " + kind,
                            "Its default would hold in its place.",
                            "Write " + std::string(kind) + ".");
}

template <typename Value>
Said<Value> TomlReader::Read(const char* key, Value otherwise, const char* kind) {
    const toml::node* node = state_->Find(key);
    if (node == nullptr) {
        return {std::move(otherwise), state_->line};
    }
    const int line = LineOf(node->source());
    const auto* value = node->as<Value>();
    if (value == nullptr) {
        ReportKind(line, key, kind);
        return {std::move(otherwise), line};
    }
    return {value->get(), line};
}

SaidText TomlReader::Text(const char* key, const char* otherwise) {
    return Read<std::string>(key, otherwise, "a text between double quotes");
}

SaidText TomlReader::Text(const char* key) {
    const bool missing = state_->table->get(key) == nullptr;
    if (missing) {
        state_->findings->Error(state_->line, state_->NameOf(key) + " is missing",
                                "Without it, this part has no meaning.",
                                "Add a line: " + std::string(key) + " = \"...\"");
    }
    SaidText text = Text(key, "");
    text.missing = missing;
    return text;
}

SaidNumber TomlReader::Number(const char* key, int64_t otherwise) {
    return Read<int64_t>(key, otherwise, "a whole number");
}

Said<bool> TomlReader::Flag(const char* key, bool otherwise) {
    return Read<bool>(key, otherwise, "true or false");
}

std::vector<SaidText> TomlReader::Texts(const char* key) {
    constexpr const char* kKind = "a list of texts, as [\"one\", \"two\"]";
    const toml::node* node = state_->Find(key);
    if (node == nullptr) {
        return {};
    }
    if (!node->is_array()) {
        ReportKind(LineOf(node->source()), key, kKind);
        return {};
    }
    std::vector<SaidText> texts;
    for (const toml::node& element : *node->as_array()) {
        const int line = LineOf(element.source());
        if (const auto* text = element.as_string()) {
            texts.push_back({text->get(), line});
        } else {
            ReportKind(line, key, kKind);
        }
    }
    return texts;
}

TomlReader TomlReader::Part(const char* key) {
    State part{&EmptyTable(), state_->line, state_->NameOf(key), state_->findings, {}};
    if (const toml::node* node = state_->Find(key)) {
        part.line = LineOf(node->source());
        if (node->is_table()) {
            part.table = node->as_table();
        } else {
            ReportKind(part.line, key, ("a table: [" + part.name + "]").c_str());
        }
    }
    return TomlReader(std::make_unique<State>(std::move(part)));
}

std::vector<TomlReader> TomlReader::Parts(const char* key) {
    std::vector<TomlReader> parts;
    const toml::node* node = state_->Find(key);
    if (node == nullptr) {
        return parts;
    }
    const std::string kind = "a list of tables: [[" + std::string(key) + "]]";
    if (!node->is_array_of_tables()) {
        ReportKind(LineOf(node->source()), key, kind.c_str());
        return parts;
    }
    parts.reserve(node->as_array()->size());
    for (const toml::node& element : *node->as_array()) {
        parts.push_back(TomlReader(std::make_unique<State>(
            State{element.as_table(), LineOf(element.source()), key, state_->findings, {}})));
    }
    return parts;
}

std::vector<std::string> TomlReader::KeysLeft() const {
    std::vector<std::pair<toml::source_position, std::string>> keys;
    for (const auto& [key, value] : *state_->table) {
        if (state_->asked.count(key.str()) == 0) {
            keys.emplace_back(key.source().begin, key.str());
        }
    }
    std::sort(keys.begin(), keys.end());
    std::vector<std::string> names;
    names.reserve(keys.size());
    for (auto& [position, name] : keys) {
        names.push_back(std::move(name));
    }
    return names;
}

}  // namespace host
