// A site inside a simulated world, as the programs keep it that let its processes fail: its file,
// its node, its alarms, and its end in the ledger.
#ifndef PAGERFWD_TESTS_PROOF_KEPT_SITE_H
#define PAGERFWD_TESTS_PROOF_KEPT_SITE_H

#include <sys/types.h>

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace proof::kills {

void WriteSite(const char* path);

// Seconds since the world began.
int Now();

// "pump3", for a group of the site. Returns its number.
int32_t RaiseNext(std::ostream& ledger, int number, const std::string& group);

// What became of all pages and alarms.
void WriteEnd(std::ostream& ledger);

// `pagerfwd run`, with a library preloaded.
class Node {
 public:
    enum class Place { kInFront, kBehind };  // of the simulation
    Node(std::string program, std::string library, const std::string& preload, Place place);

    void Start(bool until_done);
    bool IsUp() const { return process_ > 0; }
    void AskToEnd() const;
    // Whether it has ended since.
    bool HasEnded(int& status);
    // Waits until it ends, and notes that in the ledger.
    void WaitForEnd(std::ostream& ledger);

 private:
    const std::string program_, library_;
    std::string preloads_;
    pid_t process_ = -1;
};

}  // namespace proof::kills

#endif
