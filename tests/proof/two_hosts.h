// Two nodes over one real server, their lines in real time, as tests of several hosts have them.
// Judged by what the centres received.
//
// Each such test takes about a minute: a page is on its line for some twenty seconds, and no clock
// is virtual here, since the server has none but the real one.
#ifndef PAGERFWD_TESTS_PROOF_TWO_HOSTS_H
#define PAGERFWD_TESTS_PROOF_TWO_HOSTS_H

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/own_postgres.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/host/child_process.h"
#include "tests/unit/host/started_program.h"

namespace proof {

class TwoHosts : public ::testing::Test {
 protected:
    TwoHosts();

    void MakeSite(const std::string& more = "");

    static ProgramRun Pagerfwd(std::vector<std::string> arguments);
    // more: of its environment, "NAME=value".
    static std::unique_ptr<StartedProgram> Run(const std::string& node,
                                               const std::vector<std::string>& more = {},
                                               const std::string& program = PAGERFWD_PROGRAM);
    // "alarm 1" and so on, each another.
    void Raise(int count, const std::string& program = PAGERFWD_PROGRAM);

    // Two nodes, each with a page on its line.
    void BeginBoth(const std::vector<std::string>& more_of_north = {},
                   const std::vector<std::string>& more_of_south = {});

    std::string Ask(const std::string& sql) const;
    // Of nodes: which does what is done once a site, and which doesn't.
    std::string Leader() const { return Ask("SELECT node FROM Host_Nodes WHERE leads = 1"); }
    static std::string OtherThan(const std::string& node) {
        return node == "north" ? "south" : "north";
    }

    // The node that deals pages out looks at the other's line once a second.
    void UntilBothServe() const;
    // Which line has a page on it, in the middle of the dialogue with the centre.
    void UntilOnLine(const std::string& line) const;
    void UntilTakenOver() const;
    void UntilAllLeft() const;
    static void Until(const std::string& what, const std::function<bool()>& is_so);

    // None lost; one twice only where its history has named it before, and at most one of a line at
    // a takeover; and nobody has written in a term that was over (write_watch.h).
    void Judge(int alarms);

    const test_support::TempDir folder_;
    const std::string database_ = test_support::TheServer().MakeDatabase();
    std::unique_ptr<StartedProgram> exchange_;
    std::unique_ptr<StartedProgram> north_;
    std::unique_ptr<StartedProgram> south_;

 private:
    // What the centre has received: how often each alarm.
    std::map<std::string, int> Received();

    int raised_ = 0;
};

}  // namespace proof

#endif
