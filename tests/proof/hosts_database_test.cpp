// Two hosts over one database that fails one of them, or both: cut off, stalled, killed and started
// again, held up by somebody's long transaction.
#include <gtest/gtest.h>
#include <libpq-fe.h>

#include <chrono>
#include <csignal>
#include <map>
#include <memory>
#include <string>
#include <thread>

#include "tests/proof/two_hosts.h"
#include "tests/support/postgres_proxy.h"
#include "tests/unit/host/files.h"

namespace proof {
namespace {

using test_support::PostgresProxy;

// Each node has a way of its own to the server, which can fail.
class TwoHostsByProxies : public TwoHosts {
 protected:
    void BeginByProxies() { BeginBoth({By("north")}, {By("south")}); }

    std::string By(const std::string& node) {
        auto& proxy = proxies_[node];
        proxy = std::make_unique<PostgresProxy>(test_support::TheServer().Folder(), node);
        std::string name = database_;
        return "PAGERFWD_DATABASE=" +
               name.replace(name.find("?host=") + 6, std::string::npos, proxy->Folder().string());
    }
    static void Pause(int seconds) { std::this_thread::sleep_for(std::chrono::seconds(seconds)); }

    // Cut off from the middle of its page until the other has it all.
    void CutOffUntilTakenOver(const std::string& node) {
        proxies_[node]->Refuse(true);
        UntilTakenOver();
        proxies_[node]->Refuse(false);
        UntilAllLeft();
        Until("its return",
              [&] { return ReadFile(node + ".log").find("it begins anew") != std::string::npos; });
        Judge(2);
    }

    std::map<std::string, std::unique_ptr<PostgresProxy>> proxies_;
};

TEST_F(TwoHostsByProxies, LoseNoPageWhenTheActiveOneIsCutOff) {
    BeginByProxies();
    CutOffUntilTakenOver(Leader());
}

TEST_F(TwoHostsByProxies, LoseNoPageWhenTheOtherIsCutOff) {
    BeginByProxies();
    CutOffUntilTakenOver(OtherThan(Leader()));
}

TEST_F(TwoHostsByProxies, LoseNoPageWhenBothAreCutOff) {
    BeginByProxies();
    for (const auto& [node, proxy] : proxies_) {
        proxy->Refuse(true);
    }
    Pause(10);
    for (const auto& [node, proxy] : proxies_) {
        proxy->Refuse(false);
    }
    UntilAllLeft();
    Judge(2);
}

// Nobody closes anything: what was asked is answered when the connection goes on, behind the
// takeover.
TEST_F(TwoHostsByProxies, LoseNoPageWhenAConnectionStalls) {
    BeginByProxies();
    const std::string node = Leader();
    proxies_[node]->Stall(true);
    UntilTakenOver();
    proxies_[node]->Stall(false);
    UntilAllLeft();
    Judge(2);
}

TEST_F(TwoHosts, LoseNoPageWhenTheServerIsKilledAndStartsAgain) {
    BeginBoth();
    test_support::TheServer().Kill();
    std::this_thread::sleep_for(std::chrono::seconds(8));
    test_support::TheServer().Start();
    UntilAllLeft();
    Judge(2);
}

// Somebody else's program has a row, and keeps it until the pages of the dead node have left by the
// other: only what the row's alarm comes to waits for it.
TEST_F(TwoHosts, TakeOverBesideALongTransaction) {
    BeginBoth();
    const std::unique_ptr<PGconn, decltype(&PQfinish)> other(PQconnectdb(database_.c_str()),
                                                             PQfinish);
    PQclear(PQexec(other.get(), "BEGIN; UPDATE AlarmLog SET mailstate = '1'"));
    north_->Signal(SIGKILL, true);
    const auto killed = std::chrono::steady_clock::now();
    UntilTakenOver();
    EXPECT_LT(std::chrono::steady_clock::now() - killed, std::chrono::seconds(8));
    std::this_thread::sleep_for(std::chrono::seconds(15));
    PQclear(PQexec(other.get(), "COMMIT"));
    UntilAllLeft();
    Judge(2);
}

}  // namespace
}  // namespace proof
