// Notices as JSON. Tested by tests/unit/host/notices_test.cpp.
#include "host/node/notice.h"

#include "host/store/database_name.h"

#include <limits.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <utility>

#include "host/text/json.h"

namespace host {
namespace {

std::string InUtc(std::time_t at) {
    std::tm parts{};
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", gmtime_r(&at, &parts));
    return text.data();
}

}  // namespace

const char* WordOf(NoticeKind kind) {
    switch (kind) {
        case NoticeKind::kPageGivenUp:
            return "page-given-up";
        case NoticeKind::kAlarmUnheard:
            return "alarm-unheard";
        case NoticeKind::kLineSick:
            return "line-sick";
        case NoticeKind::kPagerWithoutLine:
            return "pager-without-line";
        case NoticeKind::kDatabaseAway:
            return "database-away";
        case NoticeKind::kDiskFull:
            return "disk-full";
        case NoticeKind::kNodeGone:
            return "node-gone";
        case NoticeKind::kOutcomeUnknown:
            return "outcome-unknown";
        case NoticeKind::kAcknowledged:
            return "acknowledged";
        case NoticeKind::kDelivered:
            return "delivered";
        case NoticeKind::kNotAsItShouldBe:
            return "not-as-it-should-be";
    }
    return "unknown";
}

NoticeOrigin OriginOf(const std::string& database) {
    std::array<char, HOST_NAME_MAX + 1> name{};
    gethostname(name.data(), name.size() - 1);
    return {name.data(), IsOnServer(database)
                             ? ShownName(database)
                             : std::filesystem::weakly_canonical(database).string()};
}

std::string AsJson(const Notice& notice, const NoticeOrigin& origin, std::time_t at,
                   uint64_t held_back) {
    Json json = {{"kind", WordOf(notice.kind)},
                 {"over", notice.over},
                 {"text", notice.text},
                 {"at", InUtc(at)}};
    const std::pair<const char*, const std::string&> objects[] = {
        {"alarm", notice.alarm}, {"pager", notice.pager},   {"line", notice.line},
        {"node", notice.node},   {"source", notice.source}, {"key", notice.key}};
    for (const auto& [key, object] : objects) {
        if (!object.empty()) {
            json[key] = object;
        }
    }
    json["host"] = origin.host;
    json["database"] = origin.database;
    json["held_back"] = held_back;
    return WrittenInOneLine(json);
}

}  // namespace host
