// Hours, as grids of the week. Tested by tests/unit/host/web_pages_test.cpp.
#include "host/site/hours.h"
#include "host/site/week_grid.h"
#include "host/store/tables/pagers.h"
#include "host/store/tables/time_models.h"
#include "host/web/page_parts.h"

namespace host {
namespace {

// The marks of a day, as the command line has them.
std::string Marks(const Day& day) {
    constexpr size_t kHoursAGroup = 8;
    std::string html = "<span class=\"week\" aria-hidden=\"true\">";
    for (size_t hour = 0; hour < kHoursInDay; ++hour) {
        html += hour > 0 && hour % kHoursAGroup == 0 ? " " : "";
        html += day.test(hour) ? "<b>x</b>" : ".";
    }
    return html + "</span>";
}

std::string PagersWith(const PageAsked& asked, const std::vector<PagerRow>& pagers,
                       const std::string& name) {
    std::string list;
    for (const PagerRow& pager : pagers) {
        if (pager.timeModel == name) {
            list += (list.empty() ? "" : ", ") + Shown(asked, pager.description);
        }
    }
    return "<p>" + (list.empty() ? "No pager has these hours." : "Pagers: " + list) + "</p>\n";
}

std::string WeekTable(const PageAsked& asked, const NamedWeek& named) {
    std::vector<std::vector<std::string>> rows;
    for (size_t index = 0; index < kDaysInWeek; ++index) {
        const Day day = DayOf(named.week, index);
        rows.push_back({std::string(NameOfDay(index)), WriteHours(day), Marks(day)});
    }
    return HtmlTable("Hours \"" + Decode(named.name, asked.encoding) +
                         "\": x where a page may leave, a dot where none does",
                     {"Day", "Hours", "From 0, 8 and 16 on"}, rows);
}

}  // namespace

std::string HoursPage(const PageAsked& asked) {
    const std::vector<PagerRow> pagers = ReadPagers(asked.connection);
    std::string html;
    for (const NamedWeek& named : ReadWeeks(asked.connection)) {
        html += "<h2>" + Shown(asked, named.name) + "</h2>\n" +
                PagersWith(asked, pagers, named.name) + WeekTable(asked, named);
    }
    return Framed(asked, "Hours", html.empty() ? "<p>The site has no hours.</p>\n" : html);
}

}  // namespace host
