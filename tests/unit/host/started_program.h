// A program that runs beside a test or a bench, in a process group of its own, its output in a
// file.
#ifndef PAGERFWD_TESTS_UNIT_HOST_STARTED_PROGRAM_H
#define PAGERFWD_TESTS_UNIT_HOST_STARTED_PROGRAM_H

#include <sys/types.h>

#include <string>
#include <vector>

// Killed at the end with its group, and also when who started it dies.
class StartedProgram {
 public:
    // words: the file and its arguments. output: both outputs are appended to it.
    // more: of its environment, "NAME=value".
    StartedProgram(std::vector<std::string> words, const std::string& output,
                   const std::vector<std::string>& more = {});
    ~StartedProgram();
    StartedProgram(const StartedProgram&) = delete;
    StartedProgram& operator=(const StartedProgram&) = delete;

    void Signal(int signal, bool group) const;
    void Await();

 private:
    pid_t process_;
};

#endif
