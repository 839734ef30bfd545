// Changes. Tested by tests/unit/host/web_changes_test.cpp and web_pages_test.cpp.
#include "host/web/page_changes.h"

#include <charconv>

#include "host/alarms/incoming.h"
#include "host/alarms/raising.h"
#include "host/lines/pausing.h"
#include "host/web/html.h"
#include "host/web/page_views.h"
#include "host/web/test_asking.h"
#include "host/web/token.h"

namespace host {
namespace {

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
    const Doer doer{sent.token.name, sent.now, sent.Field("comment")};
    CheckComment(doer.name, doer.comment);
    WriteTransaction transaction(sent.connection);
    if (AcknowledgeBy(sent.connection, alarm, doer) == Acknowledged::kUnknown) {
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

std::string LineIn(const FormSent& sent) {
    return SiteLineNamed(sent.connection, sent.Field("line"));
}

std::string PauseIt(const FormSent& sent) {
    PauseLine(sent.connection, LineIn(sent), true, {sent.token.name, sent.now});
    return "/";
}

std::string ResumeIt(const FormSent& sent) {
    PauseLine(sent.connection, LineIn(sent), false, {sent.token.name, sent.now});
    return "/";
}

std::string ToTest(int64_t number) {
    return Url("/test", {{"number", std::to_string(number)}});
}

TestAsker AskerOf(const FormSent& sent) {
    return {sent.connection, sent.owners, sent.token, sent.now};
}

std::string TestAPager(const FormSent& sent) {
    return ToTest(AskForTestPageBy(AskerOf(sent), sent.Field("pager"), sent.Field("line")));
}

std::string TestALine(const FormSent& sent) {
    return ToTest(AskForTestCallBy(AskerOf(sent), sent.Field("line"), sent.Field("number")));
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
