// Two nodes over one real server, their lines in real time, as tests of several hosts have them.
// Judged by what the centres received.
//
// Each such test takes about a minute: a page is on its line for some twenty seconds, and no clock
// is virtual here, since the server has none but the real one.
#ifndef PAGERFWD_TESTS_PROOF_TWO_HOSTS_H
#define PAGERFWD_TESTS_PROOF_TWO_HOSTS_H

#include <gtest/gtest.h>
#include <sys/types.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/own_postgres.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/host/child_process.h"

namespace proof {

// A program of a process group of its own, killed at the end.
class Started {
 public:
    // more: of its environment, "NAME=value".
    Started(std::vector<std::string> words, const std::string& output,
            const std::vector<std::string>& more = {});
    ~Started();
    Started(const Started&) = delete;
    Started& operator=(const Started&) = delete;

    void Signal(int signal, bool group) const;
    void Await();

 private:
    pid_t process_ = -1;
};

class TwoHosts : public ::testing::Test {
 protected:
    TwoHosts();

    void MakeSite(const std::string& more = "");

    static ProgramRun Pagerfwd(std::vector<std::string> arguments);
    // more: as above.
    static std::unique_ptr<Started> Run(const std::string& node,
                                        const std::vector<std::string>& more = {});
    static void Raise(int count);

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
    // a takeover; and nobody of an earlier term has written behind the first of a later one.
    void Judge(int alarms);

    const test_support::TempDir folder_;
    const std::string database_ = test_support::TheServer().MakeDatabase();
    std::unique_ptr<Started> exchange_;
    std::unique_ptr<Started> north_;
    std::unique_ptr<Started> south_;

 private:
    // What the centre has received: how often each alarm.
    std::map<std::string, int> Received();
};

}  // namespace proof

#endif
