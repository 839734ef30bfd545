// Any text in any cell of the tables, and a line on which nobody answers: what is read back of the
// library's trace is the one page that was tried, to its pager, and no text makes a sending of it.
#include <pagerfwd/pagerfwd.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "host/files/growing_file.h"
#include "host/line/trace_follower.h"
#include "host/store/pool.h"
#include "host/store/schema.h"
#include "host/text/controls.h"
#include "linux/win_system.h"
#include "sim/testing.h"
#include "tests/fuzz/folder.h"
#include "tests/fuzz/input.h"

namespace {

using fuzz::Expect;
using fuzz::Input;
using namespace std::chrono_literals;

constexpr const char* kDatabase = "site.db";
constexpr const char* kTemplate = "template.db";
constexpr const char* kPort = "COM 1";
constexpr int32_t kAlarm = 978948000;
constexpr size_t kNameKept = host::kTracedTextKept;

class Silent : public pagersim::FarEnd {
    void Opened(pagersim::Wire&) override {}
    void Heard(std::string_view) override {}
    void SettingsChanged(const termios&) override {}
    void Closed() override {}
};

// A row with any text in each column but those that are given.
void FillRow(host::Connection& connection, const char* table, Input& input,
             const std::vector<std::pair<std::string, std::string>>& given) {
    std::string columns;
    std::string marks;
    std::vector<std::string> texts;
    for (const std::string& column : host::FindTable(table)->columns) {
        columns += (columns.empty() ? "" : ", ") + host::Quoted(column);
        marks += marks.empty() ? "?" : ", ?";
        texts.push_back(input.Text());
        for (const auto& [name, text] : given) {
            if (name == column) {
                texts.back() = text;
            }
        }
    }
    host::Statement statement(connection, "INSERT INTO " + host::Quoted(table) + " (" + columns +
                                              ") VALUES (" + marks + ")");
    for (const std::string& text : texts) {
        statement.Bind(text);
    }
    statement.Run();
}

// As the host hands them over: what the tables give is without control characters.
struct Names {
    explicit Names(Input& input)
        : pager(fuzz::UpToNul(input.Text())),
          group(host::WithoutControls(fuzz::UpToNul(input.Text()))),
          server(host::WithoutControls(fuzz::UpToNul(input.Text()))) {}

    std::string pager;  // as it stands in the table
    std::string group;
    std::string server;
};

// A database with hours that are always open, made once: it takes longer than all else.
void MakeTemplate() {
    host::Connection connection(kTemplate, host::Connection::Mode::kCreate);
    host::CreateTables(connection);
    std::string open;
    for (const std::string& hour : host::FindTable(host::kTimeModels)->columns) {
        if (hour != "description") {
            open += ", " + hour + " = '1'";
        }
    }
    connection.Execute("INSERT INTO AlarmFwd_TMSetting (description) VALUES ('w')");
    connection.Execute("UPDATE AlarmFwd_TMSetting SET description = 'w'" + open);
}

void PutTemplate() {
    if (!std::filesystem::exists(kTemplate)) {
        MakeTemplate();
    }
    for (const char* part : {"", "-wal", "-shm", "-owners"}) {
        std::filesystem::remove(std::string(kDatabase) + part);
    }
    std::filesystem::copy_file(kTemplate, kDatabase);
}

void FillTables(Input& input, const Names& names) {
    PutTemplate();
    host::Connection connection(kDatabase);
    host::WriteTransaction transaction(connection);
    const std::string type(1, static_cast<char>('0' + input.Upto(5)));
    FillRow(connection, host::kPorts, input, {{"Description", kPort}, {"Select", "1"}});
    FillRow(connection, host::kPagers, input,
            {{"description", names.pager},
             {"comport", kPort},
             {"pgtype", type},
             {"numretries", "0"},
             {"timemodel", "w"}});
    FillRow(connection, host::kAlarmLog, input,
            {{"alarmlogID", std::to_string(kAlarm)}, {"pagerstate", "2"}, {"alarmack", "0"}});
    transaction.Commit();
}

// What the library makes of it, within its first two passes.
int32_t SendPage(const Names& names) {
    std::string name = kDatabase;
    int32_t number = kAlarm;
    std::string group = names.group;
    std::string server = names.server;
    std::string pager = host::WithoutControls(names.pager);
    std::string unused;
    char* groups[] = {group.data()};
    char* pagers[] = {pager.data()};
    FwdSpecialInfoStr info{name.data(), &number, nullptr, groups};
    const int32_t answer = AlarmFwdPager(&info, server.data(), unused.data(), pagers, 1);
    Sleep(10000);
    StopAlarmFwdPager();
    return answer;
}

bool IsNameOf(const std::string& read, const std::string& name) {
    return read == name.substr(0, kNameKept);
}

void ReadBack(const Names& names, bool queued) {
    int pages = 0;
    host::GrowingFile file("pageprot.txt");
    const std::string pager = host::WithoutControls(names.pager);
    host::TraceFollower follower(
        {[&](const host::TracedPage& page) {
             ++pages;
             Expect(page.outcome == host::TracedPage::Outcome::kNotSent,
                    "a page that nobody took is not sent");
             Expect(IsNameOf(page.pager, pager), "it is its pager's");
             Expect(IsNameOf(page.alarm, names.group), "it is its alarm's");
             Expect(page.port == kPort, "it is its port's");
             Expect(page.port_used.empty() || page.port_used == kPort, "no other port is used");
         },
         [](const host::TracedPage&) {}});
    for (std::string bytes = file.Read(); !bytes.empty(); bytes = file.Read()) {
        follower.Read(bytes, 0);
    }
    follower.Restart();
    Expect(pages == (queued ? 1 : 0), "one page is tried, and one is seen");
}

void Run(Input input) {
    const fuzz::InOwnFolder folder;
    const pagersim::VirtualClock clock(978948000 + 3600);
    pagersim::VirtualClock::SetStep(250ms);
    const Names names(input);
    FillTables(input, names);
    std::filesystem::remove("pageprot.txt");
    setenv("NX_PAGEPROT", "", 1);
    const bool plugged_in = !input.OnceIn(2);
    std::unique_ptr<pagersim::AttachedLine> line;
    if (plugged_in) {
        line = std::make_unique<pagersim::AttachedLine>(1, std::make_unique<Silent>());
    }
    const bool queued = SendPage(names) == 1;
    ReadBack(names, queued);
    host::CloseDatabases();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    setenv("TZ", "UTC", 1);
    const pagersim::VirtualClock clock(978948000);
    GetTickCount();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Run(Input(data, size));
    return 0;
}
