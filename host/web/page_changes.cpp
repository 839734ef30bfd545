// Changes. Tested by tests/unit/host/web_changes_test.cpp and web_pages_test.cpp.
#include "host/web/page_changes.h"

#include <charconv>
#include <optional>

#include "host/alarms/raising.h"
#include "host/lines/pausing.h"
#include "host/lines/site_lines.h"
#include "host/site/site_tables.h"
#include "host/store/tables/pagers.h"
#include "host/store/tables/test_pages.h"
#include "host/store/tables/trail.h"
#include "host/web/html.h"
#include "host/web/page_views.h"
#include "host/web/token.h"

namespace host {
namespace {

constexpr size_t kLongestComment = 1000;
constexpr size_t kLongestNumber = 60;

int64_t AlarmIn(const FormSent& sent) {
    const std::string text = sent.Field("alarm");
    int64_t number = 0;
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number);
    if (read.ec != std::errc() || read.ptr != end || number <= 0) {
        throw NotFound();
    }
    return number;
}

std::string BackToAlarm(int64_t alarm) {
    return Url("/alarm", {{"number", std::to_string(alarm)}});
}

std::string Acknowledge(const FormSent& sent) {
    const int64_t alarm = AlarmIn(sent);
    WriteTransaction transaction(sent.connection);
    if (AcknowledgeBy(
            sent.connection, alarm,
            {sent.token.name, sent.now, sent.Field("comment").substr(0, kLongestComment)}) ==
        Acknowledged::kUnknown) {
        throw NotFound();
    }
    transaction.Commit();
    return BackToAlarm(alarm);
}

std::string WithdrawIt(const FormSent& sent) {
    const int64_t alarm = AlarmIn(sent);
    WriteTransaction transaction(sent.connection);
    if (WithdrawBy(sent.connection, std::to_string(alarm), {sent.token.name, sent.now}) ==
        Withdrawn::kUnknown) {
        throw NotFound();
    }
    transaction.Commit();
    return BackToAlarm(alarm);
}

// As the tables have it. What the site's letters can't name is none of its names.
std::string CellIn(const FormSent& sent, const char* field) {
    try {
        return Encode(sent.Field(field), EncodingOf(sent.connection));
    } catch (const NotEncodable&) {
        throw NotFound();
    }
}

std::string LineIn(const FormSent& sent) {
    std::string line = CellIn(sent, "line");
    if (!FindSiteLine(sent.connection, line)) {
        throw NotFound();
    }
    return line;
}

std::string PauseIt(const FormSent& sent) {
    PauseLine(sent.connection, LineIn(sent), true, {sent.token.name, sent.now});
    return "/";
}

std::string ResumeIt(const FormSent& sent) {
    PauseLine(sent.connection, LineIn(sent), false, {sent.token.name, sent.now});
    return "/";
}

void NoteTest(const FormSent& sent, const char* what, const std::string& of) {
    WriteTransaction transaction(sent.connection);
    NoteInTrail(sent.connection, {0, sent.now, sent.token.name, what, "", of});
    transaction.Commit();
}

std::string TestAPager(const FormSent& sent) {
    const std::string pager = CellIn(sent, "pager");
    const std::string line = sent.Field("line").empty() ? "" : LineIn(sent);
    if (FindPagers(sent.connection, pager).size() != 1) {
        throw NotFound();
    }
    NoteTest(sent, "test page", sent.Field("pager"));
    return Url(
        "/test",
        {{"number", std::to_string(AskForTestPage(sent.connection, sent.owners, pager, line))}});
}

std::string TestALine(const FormSent& sent) {
    const std::string line = LineIn(sent);
    const std::string number = sent.Field("number").substr(0, kLongestNumber);
    if (number.empty()) {
        throw PageMistake(400, "Not done", "Say which number is to be dialled.");
    }
    NoteTest(sent, "test call", sent.Field("line") + ": " + number);
    return Url(
        "/test",
        {{"number", std::to_string(AskForTestCall(sent.connection, sent.owners, line, number))}});
}

constexpr FormAction kChanges[] = {
    {"/acknowledge", kMayAcknowledge, Acknowledge},
    {"/withdraw", kMayRaise, WithdrawIt},
    {"/pause", kMayManage, PauseIt},
    {"/resume", kMayManage, ResumeIt},
    {"/test-page", kMayManage, TestAPager},
    {"/test-call", kMayManage, TestALine},
};

}  // namespace

std::string FormSent::Field(const char* name) const {
    const auto found = fields.find(name);
    return found == fields.end() ? std::string() : found->second;
}

const FormAction* FindFormAction(const std::string& path) {
    for (const FormAction& change : kChanges) {
        if (change.path == path) {
            return &change;
        }
    }
    return nullptr;
}

}  // namespace host
