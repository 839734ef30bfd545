// Another process, for tests of what happens between processes and of programs as a whole.
#ifndef PAGERFWD_TESTS_UNIT_HOST_CHILD_PROCESS_H
#define PAGERFWD_TESTS_UNIT_HOST_CHILD_PROCESS_H

#include <sys/types.h>

#include <string>
#include <vector>

// A program that runs until the object ends, at the latest: it is killed then.
class ChildProcess {
 public:
    // command: the file and its arguments.
    explicit ChildProcess(const std::vector<std::string>& command);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // The next line of its standard output; waits for it. Empty at the end.
    std::string ReadLine();

    // Closes its standard input, and waits for its end. Returns its exit code.
    int Finish();

    pid_t Number() const { return process_; }

    // As a power cut would: no handler runs.
    void Kill();

 private:
    int Wait();

    pid_t process_ = -1;
    int input_ = -1;
    int output_ = -1;
};

struct ProgramRun {
    int exit_code;
    std::string out;
    std::string err;
};

// Runs a program to its end, without input.
ProgramRun RunProgram(const std::vector<std::string>& command);

#endif
