// A request, and what is answered to it: all that the rest of the program knows of HTTP.
#ifndef PAGERFWD_HOST_WEB_HTTP_H
#define PAGERFWD_HOST_WEB_HTTP_H

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace host {

struct WebRequest {
    std::string method;  // "GET"
    std::string target;  // as it came: "/api/v1/alarms?count=5"
    std::string token;   // of "Authorization: Bearer"; empty: none
    std::string body;
    std::string source;  // where it comes from: an address, or "unix"
    std::string cookies = {};
};

// Nothing of an answer is a page that may load anything.
inline constexpr const char* kNothingLoads = "default-src 'none'; frame-ancestors 'none'";

struct WebAnswer {
    int status = 200;
    std::string body;
    const char* type = "application/json";
    int retry_after = 0;                 // seconds; 0: nothing is said of it
    std::string location = {};           // where to go on; empty: nowhere
    std::string cookie = {};             // to be set; empty: none
    const char* policy = kNothingLoads;  // what a page may load
};

// Called by several threads at once. Throws nothing.
using WebHandler = std::function<WebAnswer(const WebRequest&)>;

// A target, taken apart. Names and values are decoded; a name that comes twice has its last value.
struct WebTarget {
    std::string path;
    std::map<std::string, std::string> query;
};
// None: it isn't one.
std::optional<WebTarget> ParseTarget(std::string_view target);

}  // namespace host

#endif
