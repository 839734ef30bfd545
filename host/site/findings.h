// What is wrong with a site file, as its author needs to hear it.
#ifndef PAGERFWD_HOST_SITE_FINDINGS_H
#define PAGERFWD_HOST_SITE_FINDINGS_H

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
};

class Findings {
 public:
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

    std::vector<Finding> findings_;
};

// "site.toml:12: error: ..." and, indented, what comes of it and what to do: ready for a terminal,
// whatever the texts of the file hold.
std::string Describe(const std::string& file, const Finding& finding);

// "2 errors, 1 warning"
std::string Summary(const Findings& findings);

}  // namespace host

#endif
