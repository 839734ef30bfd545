// A site, as its file says it: which modems there are, who is paged over them, and when.
//
// Nothing here is checked yet: words are as they were written. What was left out has its default,
// and the line of the part that it would have stood in.
#ifndef PAGERFWD_HOST_SITE_SITE_H
#define PAGERFWD_HOST_SITE_SITE_H

#include <cstdint>
#include <string>
#include <vector>

namespace host {

template <typename T>
struct Said {
    T value{};
    int line = 0;
    bool missing = false;  // from a file that has to say it: told by its reader, and by no rule
};

using SaidText = Said<std::string>;
using SaidNumber = Said<int64_t>;

struct LineSettings {
    SaidNumber data;
    SaidText parity;
    SaidNumber stop;
};

// How plain pagers and NTT pagers are reached over a port.
struct PagerService {
    SaidText dial;
    SaidText prompt;
    LineSettings settings;
};

struct SmsService {
    SaidText protocol;
    SaidText dial;
    LineSettings settings;
};

// A host that serves ports of its own.
struct SiteNode {
    int line = 0;
    SaidText name;
};

struct Port {
    int line = 0;
    SaidText name;
    SaidText device;  // its path; empty: that of the name, see port_device.h
    SaidText node;    // on whose host it is; empty: where there are no nodes
    SaidNumber baud;
    SaidText flow;
    Said<bool> modem;
    SaidText init;
    SaidText reset;
    PagerService pager;
    SmsService sms1;
    SmsService sms2;
};

struct Pager {
    int line = 0;
    SaidText description;
    SaidText owner;
    SaidText port;  // empty: any port that can dial for its type
    SaidText node;  // whose ports these are; empty: any node's
    SaidText type;
    SaidText number;
    SaidNumber retries;
    SaidNumber delay;  // minutes
    SaidText hours;    // the name of a time model
};

// The hours of one key of a time model: "mon-fri" = "8-18".
struct DayHours {
    SaidText days;
    SaidText ranges;
};

struct TimeModel {
    int line = 0;
    SaidText name;
    Said<bool> all;
    std::vector<DayHours> days;
};

// Which pagers an alarm goes to, when its group and its severity are among these.
struct Route {
    int line = 0;
    SaidText groups;                   // a pattern, as of file names: "plant/*"
    std::vector<SaidText> severities;  // empty: all
    std::vector<SaidText> pagers;      // in the order in which they are paged
};

// How an alert of Alertmanager becomes an alarm: see host/intake/alertmanager.h.
struct AlertmanagerPart {
    SaidText group;
    SaidText severity;
    SaidText server;
    SaidText text;
};

// A program and its arguments; empty: none.
using Command = std::vector<SaidText>;

struct Site {
    SaidText encoding;
    Said<bool>
        page_resolved;  // whether who was paged for an alarm is told by a page that it is over
    SaidText unknown_outcome;
    Command notify;      // told of what an operator should hear of
    Said<bool> answers;  // whether it is told, too, what became of alarms with a key
    Command heartbeat;   // run while all is as it should be
    AlertmanagerPart alertmanager;
    std::vector<SiteNode> nodes;
    std::vector<Port> ports;
    std::vector<Pager> pagers;
    std::vector<TimeModel> timeModels;
    std::vector<Route> routes;
};

// The time model of a pager whose file names none. It is there even where the file has none of this
// name, and allows every hour.
inline constexpr const char* kAlways = "always";

// What becomes of a page that may have left when its node died.
inline constexpr const char* kSendAgain = "send again";
inline constexpr const char* kAsk = "ask";

// The groups of a route whose file names none.
inline constexpr const char* kEveryGroup = "*";

}  // namespace host

#endif
