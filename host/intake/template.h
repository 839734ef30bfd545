// Texts with places in braces, in which what came takes its place: "{labels.team}/{labels.job}".
// "{labels.team|labels.job|'ops'}" has the first of these that came, and at last a text as it
// stands.
// "{{" and "}}" are braces.
#ifndef PAGERFWD_HOST_INTAKE_TEMPLATE_H
#define PAGERFWD_HOST_INTAKE_TEMPLATE_H

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace host {

class BadTemplate : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

class Template {
 public:
    // Throws BadTemplate, which says what is wrong with it.
    explicit Template(std::string_view text);

    // The names in its places.
    std::vector<std::string> Names() const;

    // What a name stands for; none, or empty: the next of the place.
    using Values = std::function<std::optional<std::string>(const std::string& name)>;
    std::string Fill(const Values& values) const;

 private:
    struct Part {
        std::string text;                // as it stands there, or where nothing came
        std::vector<std::string> names;  // in their order; none: it is no place
    };
    void AddPlace(std::string_view place);

    std::vector<Part> parts_;
};

}  // namespace host

#endif
