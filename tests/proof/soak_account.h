// The account of the soak's pages: what was asked for, what was done, and what the database tells
// of it in the end.
#ifndef PAGERFWD_TESTS_PROOF_SOAK_ACCOUNT_H
#define PAGERFWD_TESTS_PROOF_SOAK_ACCOUNT_H

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "tests/proof/page_watch.h"

namespace proof::soak {

// Notes go to a file at once: the account must not grow in the memory that is watched.
//
// Threads    Any may note.
class Account {
 public:
    Account();

    void NoteForward(const PageKey& page, int answer);
    void NoteDial(const PageKey& page, int second);
    void NoteReceived(const PageKey& page, bool in_faulty_call);
    void NoteAcknowledgement(int alarm, int second);
    void NoteRestart(int second);

    struct Totals {
        long alarms = 0, pages = 0, sends = 0, received = 0;
        long done = 0, given_up = 0, acknowledged = 0;  // pages; each is one of these
        std::vector<std::string> complaints;
    };
    // When nothing is owed any more.
    Totals Judge(const char* database) const;

 private:
    struct Closer {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    void Note(char what, const PageKey& page, int value);

    const std::unique_ptr<std::FILE, Closer> notes_;
};

}  // namespace proof::soak

#endif
