// Asking for tests. Tested by tests/unit/host/web_look_test.cpp and web_changes_test.cpp.
#include "host/web/test_asking.h"

#include "host/alarms/incoming.h"
#include "host/lines/site_lines.h"
#include "host/site/site_tables.h"
#include "host/store/tables/pagers.h"
#include "host/store/tables/test_pages.h"
#include "host/store/tables/trail.h"

namespace host {
namespace {

constexpr size_t kLongestNumber = 60;

// As the tables have it; what the site's letters can't name is none of its names.
std::string CellOf(Connection& connection, const char* field, const std::string& name) {
    try {
        return Encode(name, EncodingOf(connection));
    } catch (const NotEncodable&) {
        throw BadField(field, "there is none of this name");
    }
}

std::string SitePagerNamed(Connection& connection, const std::string& name) {
    std::string cell = CellOf(connection, "pager", name);
    if (FindPagers(connection, cell).size() != 1) {
        throw BadField("pager", "there is none of this name, or there are several");
    }
    return cell;
}

void NoteTest(const TestAsker& asker, const char* what, const std::string& of) {
    WriteTransaction transaction(asker.connection);
    NoteInTrail(asker.connection, {0, asker.now, asker.token.name, what, "", of});
    transaction.Commit();
}

}  // namespace

std::string SiteLineNamed(Connection& connection, const std::string& name) {
    std::string cell = CellOf(connection, "line", name);
    if (!FindSiteLine(connection, cell)) {
        throw BadField("line", "there is none of this name");
    }
    return cell;
}

int64_t AskForTestPageBy(const TestAsker& asker, const std::string& pager,
                         const std::string& line) {
    const std::string to = SitePagerNamed(asker.connection, pager);
    const std::string over = line.empty() ? "" : SiteLineNamed(asker.connection, line);
    NoteTest(asker, "test page", pager);
    return AskForTestPage(asker.connection, asker.owners, to, over);
}

int64_t AskForTestCallBy(const TestAsker& asker, const std::string& line,
                         const std::string& number) {
    const std::string over = SiteLineNamed(asker.connection, line);
    if (number.empty()) {
        throw BadField("number", "say which one is to be dialled");
    }
    if (number.size() > kLongestNumber) {
        throw BadField("number", "it is longer than " + std::to_string(kLongestNumber) + " bytes");
    }
    NoteTest(asker, "test call", line + ": " + number);
    return AskForTestCall(asker.connection, asker.owners, over, number);
}

}  // namespace host
