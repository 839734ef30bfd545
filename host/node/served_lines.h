// All lines of the site, as their node serves them.
//
// Threads    One.
// Errors     StoreError and std::system_error; the next look tries again.
#ifndef PAGERFWD_HOST_NODE_SERVED_LINES_H
#define PAGERFWD_HOST_NODE_SERVED_LINES_H

#include <ctime>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/node/served_line.h"
#include "host/store/connection.h"
#include "host/store/tables/lines.h"
#include "host/text/encoding.h"

namespace host {

class ServedLines {
 public:
    ServedLines(Encoding encoding, OperatorLog& log) : encoding_(encoding), log_(log) {}

    // How lines are started from now on; before the first read.
    void ServeWith(LineCommand command) { command_ = std::move(command); }
    // The node of a site of several hosts: it serves its own lines, and each only where no other
    // node does. Without this, all lines of the site are served.
    void ServeFor(const std::string& node) { node_ = node; }
    // Why none has any work; empty: all may have.
    void SetIdle(const std::string& why);

    // Takes the lines that the site has now; one whose settings have changed is made anew. Returns
    // whether anything has changed.
    bool Read(Connection& connection);

    // Whether one has something to look at that the tables don't tell.
    bool HaveNews(std::time_t now) const;
    // Then, and when the tables have changed.
    void Look(Connection& connection, std::time_t now);
    // While the database can't be used: only at their processes.
    void LookAtProcesses(std::time_t now);

    void Sent(const Send& send, std::time_t now);

    // Politely; a page on the line is finished first. Looks are to go on until none is left.
    void AskToEnd();
    bool AnyLeft() const;
    // At once: they have no right to anything any more.
    void Kill() { lines_.clear(); }

    // In the order of the site; those that the site knows no more behind.
    const std::vector<std::unique_ptr<ServedLine>>& All() const { return lines_; }
    // Null: there is none of this name.
    ServedLine* Find(const std::string& name) const;

 private:
    void DropThoseThatLeft();
    void LookAt(ServedLine& line, const LineState& state, Connection& connection, std::time_t now);
    void TakeIn(Connection& connection, SiteLine line);

    void Claim(Connection& connection, ServedLine& line);
    void LetGoOfThoseThatLeft(Connection& connection);

    LineCommand command_;
    std::string node_;  // empty: the only one
    bool ending_ = false;
    std::set<std::string> told_;  // lines that another node serves
    const Encoding encoding_;
    OperatorLog& log_;
    std::vector<std::unique_ptr<ServedLine>> lines_;
    std::string settings_;  // of all, as they were read last
};

}  // namespace host

#endif
