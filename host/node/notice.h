// An event that somebody should hear of: what the command of [notify] gets.
#ifndef PAGERFWD_HOST_NODE_NOTICE_H
#define PAGERFWD_HOST_NODE_NOTICE_H

#include <cstdint>
#include <ctime>
#include <string>

namespace host {

enum class NoticeKind {
    kPageGivenUp,       // its tries are used up, and none got through
    kAlarmUnheard,      // no page of an alarm got through to anybody
    kLineSick,          // a line's device, modem or telephone line is out
    kPagerWithoutLine,  // pages wait that no line can have
    kDatabaseAway,      // the node can't read or write it
    kDiskFull,          // of the database
    kNodeGone,          // a host died: others have taken its pages
    kOutcomeUnknown,    // a page may have left when its node died, and waits for an operator
    kAcknowledged,      // an alarm with a key
    kDelivered,         // the first page of one
    kNotAsItShouldBe,   // an alarm or a page, by the heartbeat's own reckoning
};

// As the event names it: "line-sick".
const char* WordOf(NoticeKind kind);

// Texts in UTF-8.
struct Notice {
    NoticeKind kind{};
    bool over = false;  // the all-clear of an earlier one
    std::string text;   // a sentence for people: "line \"north\" is sick: its modem doesn't answer"
    // What it is about; empty where it doesn't apply. Notices of one kind about the same follow one
    // another.
    std::string alarm;  // its number
    std::string pager;
    std::string line;
    std::string node;
    std::string source;  // of an alarm with a key: whose it is, and which
    std::string key;
};

// Where notices come from.
struct NoticeOrigin {
    std::string host;
    std::string database;
};

// This machine, and the whole path of the database.
NoticeOrigin OriginOf(const std::string& database);

// One object in one line. held_back: notices that this one stands for besides itself.
std::string AsJson(const Notice& notice, const NoticeOrigin& origin, std::time_t at,
                   uint64_t held_back);

}  // namespace host

#endif
