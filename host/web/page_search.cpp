// What is looked for. Tested by tests/unit/host/web_search_test.cpp.
#include <array>

#include "host/pages/routes.h"
#include "host/store/tables/pagers.h"
#include "host/trace_view/page_filter.h"
#include "host/web/page_parts.h"

namespace host {
namespace {

// The instant that clocks of the site show so.
std::time_t InstantOf(LocalSeconds local) {
    std::tm parts{};
    const auto seconds = static_cast<std::time_t>(local);
    gmtime_r(&seconds, &parts);
    parts.tm_isdst = -1;
    return std::mktime(&parts);
}

// 0: the address says none.
std::time_t InstantInAddress(const WebTarget& target, const char* name) {
    const std::string text = InAddress(target, name);
    try {
        return text.empty() ? 0 : InstantOf(ParseInstant(text));
    } catch (const NoInstant& mistake) {
        throw PageMistake(400, "Not understood", std::string(name) + ": " + mistake.what());
    }
}

// As the browser's field for times has it.
std::string Field(std::time_t instant) {
    std::tm parts{};
    std::array<char, 32> text{};
    if (instant == 0 || localtime_r(&instant, &parts) == nullptr ||
        std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &parts) == 0) {
        return "";
    }
    return text.data();
}

// One that the site's letters can't name is no pager's.
std::string CellOf(const PageAsked& asked, const std::string& name) {
    try {
        return Encode(name, asked.encoding);
    } catch (const NotEncodable&) {
        return name;
    }
}

std::string Choice(const char* label, const char* name, const std::string& chosen,
                   const std::vector<std::string>& values) {
    std::string html = std::string("<label>") + label + " <select name=\"" + name + "\">" +
                       Option("", chosen, "any");
    bool known = chosen.empty();
    for (const std::string& value : values) {
        html += Option(value, chosen, value);
        known = known || value == chosen;
    }
    return html + (known ? "" : Option(chosen, chosen, chosen)) + "</select></label>";
}

std::string TimeField(const char* label, const char* name, std::time_t instant) {
    return std::string("<label>") + label + " <input type=\"datetime-local\" step=\"1\" name=\"" +
           name + "\" value=\"" + Field(instant) + "\"></label>";
}

}  // namespace

Search::Search(const PageAsked& of)
    : asked(of),
      group(InAddress(of.target, "group")),
      pager(InAddress(of.target, "pager")),
      pager_cell(CellOf(of, pager)),
      state(InAddress(of.target, "state")),
      since(InstantInAddress(of.target, "since")),
      until(InstantInAddress(of.target, "until")) {}

bool Search::FitsGroup(const std::string& cell) const {
    const std::string name = Decode(cell, asked.encoding);
    return group.find_first_of("*?[") == std::string::npos ? name.find(group) != std::string::npos
                                                           : host::FitsGroup(group, name);
}

bool Search::Any() const {
    return !group.empty() || !pager.empty() || !state.empty() || since != 0 || until != 0;
}

std::string Search::None(const char* without_search) const {
    return Any() ? "Nothing fits this search." : without_search;
}

std::string Search::Url(const char* cursor, const std::string& from) const {
    return host::Url(asked.target.path, {{"group", group},
                                         {"pager", pager},
                                         {"state", state},
                                         {"since", InAddress(asked.target, "since")},
                                         {"until", InAddress(asked.target, "until")},
                                         {cursor, from}});
}

std::string SearchForm(const Search& search, const std::vector<std::string>& states) {
    std::vector<std::string> pagers;
    for (const std::string& cell : PagerNames(search.asked.connection)) {
        pagers.push_back(Decode(cell, search.asked.encoding));
    }
    return "<form class=\"filter\" role=\"search\" action=\"" + Escaped(search.asked.target.path) +
           "\"><label>Group, or PLANT/* <input name=\"group\" value=\"" + Escaped(search.group) +
           "\"></label>" + Choice("Pager", "pager", search.pager, pagers) +
           (states.empty() ? "" : Choice("State", "state", search.state, states)) +
           TimeField("Since", "since", search.since) + TimeField("Until", "until", search.until) +
           "<button>Search</button>" +
           (search.Any()
                ? "<p class=\"more\">" + LinkTo(search.asked.target.path, "Show all") + "</p>"
                : "") +
           "</form>\n";
}

std::string MoreOf(const Search& search, const char* cursor, const std::string& from) {
    return from.empty()
               ? ""
               : "<p class=\"more\">" + LinkTo(search.Url(cursor, from), "Further ones") + "</p>\n";
}

}  // namespace host
