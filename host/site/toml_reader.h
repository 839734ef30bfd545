// A TOML document, read key by key: every value with its line, every mistake a finding.
//
// Order      A reader outlives neither its document nor the findings. When it ends, the keys that
//            nobody asked for are reported as unknown.
// Errors     None: what can't be read is reported, and has its default.
#ifndef PAGERFWD_HOST_SITE_TOML_READER_H
#define PAGERFWD_HOST_SITE_TOML_READER_H

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "host/site/findings.h"
#include "host/site/site.h"

namespace host {

class TomlReader {
 public:
    ~TomlReader();
    TomlReader(TomlReader&& other) noexcept;
    TomlReader(const TomlReader&) = delete;
    TomlReader& operator=(const TomlReader&) = delete;
    TomlReader& operator=(TomlReader&&) = delete;

    // The line where the table begins.
    int Line() const;

    // The value of a key, or its default. Text without a default is asked for: it is a finding
    // where it is missing.
    SaidText Text(const char* key);
    SaidText Text(const char* key, const char* otherwise);
    SaidNumber Number(const char* key, int64_t otherwise);
    // A list of texts, empty where there is none.
    std::vector<SaidText> Texts(const char* key);
    Said<bool> Flag(const char* key, bool otherwise);

    // [key]: an empty table where there is none.
    TomlReader Part(const char* key);
    // [[key]], in the order of the file.
    std::vector<TomlReader> Parts(const char* key);

    // The keys that nobody has asked for yet, in the order of the file.
    std::vector<std::string> KeysLeft() const;

 private:
    friend class TomlDocument;
    struct State;
    explicit TomlReader(std::unique_ptr<State> state);

    template <typename Value>
    Said<Value> Read(const char* key, Value otherwise, const char* kind);
    void ReportKind(int line, const char* key, const char* kind) const;

    std::unique_ptr<State> state_;
};

class TomlDocument {
 public:
    // Text that isn't TOML is a finding, and the document is empty.
    TomlDocument(std::string_view text, Findings& findings);
    ~TomlDocument();
    TomlDocument(const TomlDocument&) = delete;
    TomlDocument& operator=(const TomlDocument&) = delete;

    bool IsToml() const;
    TomlReader Root();

 private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace host

#endif
