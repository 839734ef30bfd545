// What is wrong with a site file, as its author needs to hear it.
#ifndef PAGERFWD_HOST_SITE_FINDINGS_H
#define PAGERFWD_HOST_SITE_FINDINGS_H

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace host {

struct Finding {
    enum class Severity {
        kError,    // the file can't be imported
        kWarning,  // it can, but it may not do what was meant
    };

    int line;  // of the file, from 1
    Severity severity;
    std::string what;         // "port \"COM 1\": there is no parity \"mark\""
    std::string consequence;  // what would come of it
    std::string remedy;       // what to write instead
    std::string place = {};   // "row 3 of AlarmFwd_PagerSetting"; empty: the line says it
};

class Findings {
 public:
    // How a line is called where the site is no file: "row 3 of AlarmFwd_PagerSetting".
    using NameOfLine = std::function<std::string(int line)>;

    Findings() = default;
    explicit Findings(NameOfLine name) : name_(std::move(name)) {}

    // "on line 3", "in row 3 of AlarmFwd_PagerSetting": for texts that point elsewhere.
    std::string Where(int line) const;

    void Error(int line, std::string what, std::string consequence, std::string remedy) {
        Add(line, Finding::Severity::kError, std::move(what), std::move(consequence),
            std::move(remedy));
    }
    void Warning(int line, std::string what, std::string consequence, std::string remedy) {
        Add(line, Finding::Severity::kWarning, std::move(what), std::move(consequence),
            std::move(remedy));
    }

    // In the order of their lines.
    const std::vector<Finding>& All() const { return findings_; }
    size_t Count(Finding::Severity severity) const;
    bool HasErrors() const { return Count(Finding::Severity::kError) > 0; }

 private:
    void Add(int line, Finding::Severity severity, std::string what, std::string consequence,
             std::string remedy);

    NameOfLine name_;
    std::vector<Finding> findings_;
};

// "site.toml:12: error: ...", or "site.db: row 3 of ...: error: ..." and, indented, what comes of
// it and what to do: ready for a terminal, whatever the texts of the file hold.
std::string Describe(const std::string& file, const Finding& finding);

// "2 errors, 1 warning"
std::string Summary(const Findings& findings);

}  // namespace host

#endif
