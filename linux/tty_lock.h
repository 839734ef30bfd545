// Inside the line driver: the lock file that shows other programs that a line is in use.
#ifndef PAGERFWD_LINUX_TTY_LOCK_H
#define PAGERFWD_LINUX_TTY_LOCK_H

#include <string>

// Holds at most one lock file, and removes it when destroyed.
class TtyLock {
 public:
    TtyLock() = default;
    ~TtyLock();
    TtyLock(const TtyLock&) = delete;
    TtyLock& operator=(const TtyLock&) = delete;

    // Takes the lock of a device; the arguments are those of tty_open. True without a prefix: then
    // there is nothing to take. False when a process holds the lock to the last of the rounds, or
    // the file can't be made.
    bool Take(const char* device, const char* prefix, const char* options);

 private:
    std::string m_path;  // empty: none held
};

#endif
