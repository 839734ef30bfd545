// The API. Tested by tests/unit/host/web_api_test.cpp.
#include "host/web/api.h"

#include <algorithm>
#include <ctime>
#include <optional>

#include "host/intake/json_input.h"
#include "host/store/pool.h"
#include "host/web/api_calls.h"
#include "host/web/token.h"

namespace host {
namespace {

constexpr int kSecondsAway = 5;

struct Endpoint {
    const char* method;
    std::string_view path;
    const char* right;
    Json (*call)(const ApiCall&);
};
constexpr Endpoint kEndpoints[] = {
    {"POST", "/api/v1/alarms", kMayRaise, RaiseAlarms},
    {"POST", "/api/v1/alarms/withdraw", kMayRaise, WithdrawAlarms},
    {"POST", "/api/v1/alarms/acknowledge", kMayAcknowledge, AcknowledgeAlarms},
    {"POST", "/api/v1/alertmanager", kMayRaise, TakeAlerts},
    {"GET", "/api/v1/alarms", kMayLook, ShowAlarms},
    {"GET", "/api/v1/pages", kMayLook, ShowPages},
    {"GET", "/api/v1/lines", kMayLook, ShowLines},
    {"GET", "/api/v1/nodes", kMayLook, ShowNodes},
    {"GET", "/api/v1/history", kMayLook, ShowHistory},
    {"POST", "/api/v1/test", kMayManage, AskForTest},
};

// A path that ends with a number: "/api/v1/alarms/978948000".
struct Numbered {
    std::string_view path;
    const char* right;
    Json (*call)(const ApiCall&, const std::string& number);
};
constexpr Numbered kNumbered[] = {
    {"/api/v1/alarms/", kMayLook, ShowAlarm},
    {"/api/v1/test/", kMayManage, ShowTest},
};
constexpr std::string_view kDocument = "/api/v1/openapi.json";

WebAnswer Refused(int status, const std::string& why, const std::string& field = {}) {
    Json json = {{"error", why}};
    if (!field.empty()) {
        json["field"] = field;
    }
    return {status, WrittenInOneLine(json)};
}

// The number in a path; empty: the path isn't of this kind. None of more digits is a number here.
std::string NumberIn(const std::string& path, const Numbered& numbered) {
    constexpr size_t kMostDigits = 18;
    const std::string number = path.substr(std::min(numbered.path.size(), path.size()));
    return path.compare(0, numbered.path.size(), numbered.path) == 0 &&
                   number.size() <= kMostDigits &&
                   number.find_first_not_of("0123456789") == std::string::npos
               ? number
               : "";
}

// Which methods a path has: "GET, POST".
std::string MethodsOf(const std::string& path) {
    std::string methods = path == kDocument ? "GET" : "";
    for (const Numbered& numbered : kNumbered) {
        methods += NumberIn(path, numbered).empty() ? "" : "GET";
    }
    for (const Endpoint& endpoint : kEndpoints) {
        if (endpoint.path == path) {
            methods += (methods.empty() ? "" : ", ") + std::string(endpoint.method);
        }
    }
    return methods;
}

WebAnswer Unknown(const WebTarget& target) {
    const std::string methods = MethodsOf(target.path);
    return methods.empty() ? Refused(404, "there is nothing of this name")
                           : Refused(405, "this takes only " + methods);
}

Token Authorize(Connection& connection, const WebRequest& request, const char* right,
                std::time_t now) {
    const std::optional<Token> token = TokenFor(connection, request.token, now);
    if (!token) {
        throw ApiError(401, "a token is needed: \"Authorization: Bearer ...\"");
    }
    if (!May(*token, right)) {
        throw ApiError(403, std::string("this token may not ") + right);
    }
    return *token;
}

// One that can't be opened may be there again in a moment, whatever the reason: somebody puts it
// back, or brings it up to date.
void Open(std::optional<Lease>& lease, const std::string& database) {
    try {
        lease.emplace(database);
    } catch (const StoreError& error) {
        throw StoreAway(error.what());
    }
}

WebAnswer Do(const std::string& database, const WebRequest& request, const WebTarget& target,
             const char* right, const std::function<Json(const ApiCall&)>& call) {
    const std::time_t now = std::time(nullptr);
    std::optional<Lease> lease;
    Open(lease, database);
    const Token token = Authorize(lease->Database(), request, right, now);
    return {200, WrittenInOneLine(
                     call({lease->Database(), lease->Owners(), target, request.body, token, now}))};
}

WebAnswer Serve(const std::string& database, const WebRequest& request, const WebTarget& target) {
    for (const Numbered& numbered : kNumbered) {
        const std::string number = NumberIn(target.path, numbered);
        if (!number.empty() && request.method == "GET") {
            return Do(database, request, target, numbered.right,
                      [&](const ApiCall& call) { return numbered.call(call, number); });
        }
    }
    for (const Endpoint& endpoint : kEndpoints) {
        if (endpoint.path == target.path && endpoint.method == request.method) {
            return Do(database, request, target, endpoint.right, endpoint.call);
        }
    }
    return Unknown(target);
}

}  // namespace

WebAnswer Api::Answer(const WebRequest& request) const {
    try {
        const std::optional<WebTarget> target = ParseTarget(request.target);
        if (!target) {
            return Refused(400, "the address can't be read");
        }
        if (target->path == kDocument && request.method == "GET") {
            return {200, kOpenApi};
        }
        return Serve(database_, request, *target);
    } catch (const BadField& error) {
        return Refused(400, error.what(), error.Field());
    } catch (const ApiError& error) {
        return Refused(error.Status(), error.what());
    } catch (const StoreAway& error) {
        log_.Error(error.what());
        WebAnswer answer = Refused(503, "the database is away; try again soon");
        answer.retry_after = kSecondsAway;
        return answer;
    } catch (const std::exception& error) {
        log_.Error(error.what());
        return Refused(500, "this can't be done now; the journal says why");
    }
}

}  // namespace host
