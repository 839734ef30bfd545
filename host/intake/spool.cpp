// The spool. Tested by tests/unit/host/spool_test.cpp.
#include "host/intake/spool.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/random.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>

#include "host/alarms/raising.h"
#include "host/files/lock_file.h"
#include "host/files/shared_file.h"
#include "host/intake/json_input.h"
#include "host/site/site_tables.h"
#include "host/store/database_name.h"
#include "host/store/tables/spooled.h"

namespace host {
namespace {

constexpr const char* kBeingWritten = ".new";
constexpr const char* kRefused = ".refused";
constexpr off_t kLargest = off_t{512} << 20;

[[noreturn]] void Fail(const std::string& path, const std::string& why) {
    throw FileError(path + ": " + why);
}

Json ToJson(const ToWithdraw& withdrawal) {
    if (!withdrawal.number.empty()) {
        return {{"alarm", NumberOrText(withdrawal.number)}};
    }
    return {{"source", withdrawal.key.source}, {"key", withdrawal.key.key}};
}

std::string TextOf(const Spooled& what) {
    Json json = {{"at", static_cast<int64_t>(what.at)}, {"by", what.by}};
    for (const IncomingAlarm& alarm : what.raise) {
        json["raise"].push_back(ToJson(alarm));
    }
    for (const ToWithdraw& withdrawal : what.withdraw) {
        json["withdraw"].push_back(ToJson(withdrawal));
    }
    return WrittenInOneLine(json);
}

Spooled Parse(const std::string& text) {
    const Json json = ParseJson(text);
    const auto at = json.find("at");
    if (!json.is_object() || at == json.end() || !at->is_number_integer()) {
        throw BadField("at", "a number is expected here");
    }
    Spooled what;
    what.at = static_cast<std::time_t>(at->get<int64_t>());
    ReadText(json, "by", what.by);
    if (json.contains("raise")) {
        what.raise = AlarmsFromJson(json["raise"].dump(), "");
    }
    if (json.contains("withdraw")) {
        what.withdraw = WithdrawalsFromJson(json["withdraw"].dump());
    }
    return what;
}

void WriteAll(const std::string& path, const Descriptor& file, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = write(file.Number(), text.data(), text.size());
        if (written <= 0) {
            Fail(path, std::strerror(errno));
        }
        text.remove_prefix(static_cast<size_t>(written));
    }
    if (fsync(file.Number()) != 0) {
        Fail(path, std::strerror(errno));
    }
}

// So that the name of a new file survives a power cut, too.
void SyncFolder(const std::string& folder) {
    const Descriptor open_folder(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!open_folder.IsOpen() || fsync(open_folder.Number()) != 0) {
        Fail(folder, std::strerror(errno));
    }
}

void WriteFile(const std::string& folder, const std::string& name, const std::string& text,
               const Ownership& ownership) {
    const std::string path = folder + "/" + name;
    const std::string before = path + kBeingWritten;
    try {
        WriteAll(before, OpenOrMakeShared(before, O_WRONLY, ownership), text);
    } catch (...) {
        unlink(before.c_str());
        throw;
    }
    if (std::rename(before.c_str(), path.c_str()) != 0) {
        Fail(path, std::strerror(errno));
    }
    SyncFolder(folder);
}

std::string ReadAll(const std::string& path) {
    const Descriptor file = OpenShared(path, O_RDONLY);
    std::string text;
    std::array<char, 65536> buffer{};
    while (file.IsOpen() && static_cast<off_t>(text.size()) < kLargest) {
        const ssize_t count = read(file.Number(), buffer.data(), buffer.size());
        if (count < 0) {
            Fail(path, std::strerror(errno));
        }
        if (count == 0) {
            break;
        }
        text.append(buffer.data(), static_cast<size_t>(count));
    }
    return text;
}

bool IsSpoolName(std::string_view name) {
    constexpr size_t kLength = 19 + 1 + 16;
    return name.size() == kLength &&
           name.find_first_not_of("0123456789abcdef-") == std::string_view::npos;
}

// In the order of their times.
std::vector<std::string> NamesIn(const std::string& folder) {
    struct Closer {
        void operator()(DIR* open_folder) const { closedir(open_folder); }
    };
    const std::unique_ptr<DIR, Closer> open_folder(opendir(folder.c_str()));
    std::vector<std::string> names;
    while (const dirent* const entry = open_folder ? readdir(open_folder.get()) : nullptr) {
        if (IsSpoolName(&entry->d_name[0])) {
            names.emplace_back(&entry->d_name[0]);
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

int Do(Connection& connection, const Spooled& what) {
    int count = 0;
    for (const NewAlarm& alarm : CheckedAlarms(what.raise, EncodingOf(connection))) {
        Raise(connection, alarm, what.at);
        ++count;
    }
    for (const ToWithdraw& withdrawal : what.withdraw) {
        const Doer doer{what.by, what.at};
        if (withdrawal.number.empty()) {
            WithdrawBy(connection, withdrawal.key, doer);
        } else {
            WithdrawBy(connection, withdrawal.number, doer);
        }
        ++count;
    }
    return count;
}

// How many alarms it was about; 0 where it was taken up before.
int TakeUp(Connection& connection, const std::string& name, const std::string& text) {
    const Spooled what = Parse(text);
    WriteTransaction transaction(connection);
    if (WasSpooled(connection, name)) {
        return 0;
    }
    const int count = Do(connection, what);
    AddSpooled(connection, name, what.at);
    transaction.Commit();
    return count;
}

void TakeUpOne(Connection& connection, const std::string& folder, const std::string& name,
               TakenUp& taken) {
    const std::string path = folder + "/" + name;
    try {
        taken.alarms += TakeUp(connection, name, ReadAll(path));
        unlink(path.c_str());
    } catch (const BadField& error) {
        taken.refused.push_back(path + kRefused + ": " + error.Field() + ": " + error.what());
        std::rename(path.c_str(), (path + kRefused).c_str());
    } catch (const FileError& error) {
        taken.refused.emplace_back(error.what());
    }
}

LockFile LockIn(const std::string& folder, const std::string& owner) {
    try {
        return LockFile(folder + "/lock", OwnershipOf(owner));
    } catch (const FileError& error) {
        throw StoreError(owner + ": " + error.what());
    }
}

// Who may not write the database may not do so by way of the spool.
void CheckRight(const std::string& owner) {
    if (faccessat(AT_FDCWD, owner.c_str(), W_OK, AT_EACCESS) != 0 &&
        (errno == EACCES || errno == EROFS)) {
        Fail(owner, std::strerror(errno));
    }
}

}  // namespace

std::string NewSpoolName() {
    using Clock = std::chrono::system_clock;
    const int64_t now =
        std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now().time_since_epoch())
            .count();
    uint64_t random = 0;
    if (getrandom(&random, sizeof random, 0) != sizeof random) {
        throw FileError(std::string("no random number: ") + std::strerror(errno));
    }
    std::array<char, 64> name{};
    std::snprintf(name.data(), name.size(), "%019" PRId64 "-%016" PRIx64, now, random);
    return name.data();
}

void NoteTakenUp(Connection& connection, const std::string& name, std::time_t now) {
    AddSpooled(connection, name, now);
}

Spool::Spool(const std::string& database)
    : folder_(BesideName(database) + "-spool"), owner_(BesideOwner(database)) {}

std::string Spool::Keep(const std::string& name, const Spooled& what) const {
    try {
        CheckRight(owner_);
        const Ownership ownership = OwnershipOf(owner_);
        MakeSharedFolder(folder_, ownership);
        WriteFile(folder_, name, TextOf(what), ownership);
    } catch (const FileError& error) {
        Fail(folder_, std::string("the alarm can't be kept there: ") + error.what());
    }
    return folder_ + "/" + name;
}

TakenUp Spool::TakeUp(Connection& connection) const {
    TakenUp taken;
    if (NamesIn(folder_).empty()) {
        return taken;
    }
    LockFile lock = LockIn(folder_, owner_);
    if (!lock.TryTake("the spool")) {
        return taken;
    }
    // What another has taken up meanwhile is gone by now.
    for (const std::string& name : NamesIn(folder_)) {
        TakeUpOne(connection, folder_, name, taken);
    }
    return taken;
}

}  // namespace host
