// A pty that any program can open as a serial line, and that says who has it open.
#ifndef PAGERFWD_SIM_SERVE_SERVED_PTY_H
#define PAGERFWD_SIM_SERVE_SERVED_PTY_H

#include <termios.h>

#include <string>
#include <string_view>

#include "sim/descriptor.h"

namespace pagersim {

// The program's end is raw, 9600 bit/s, until a program sets it, and keeps its settings from one
// opening to the next. A pty has eight data bits and no parity, whatever is set.
//
// Threads    One. Nothing here blocks.
// Errors     A pty that can't be made throws std::system_error.
class ServedPty {
 public:
    ServedPty();

    const std::string& Path() const { return path_; }  // what programs open
    int Master() const { return master_.Number(); }    // readable: Read
    int Watch() const { return watch_.Number(); }      // readable: TakeOpenings

    // What has happened since the last call, in order: '+' for each opening by a program, '-' for
    // each closing.
    std::string TakeOpenings();

    std::string Read();                    // what has come; empty: nothing for now
    size_t Write(std::string_view bytes);  // how many were taken
    void DropUnread();                     // what no program has read
    termios Settings() const;

 private:
    Descriptor master_;
    std::string path_;
    Descriptor
        own_;  // of the program's end, open before the watch begins: it can drop what is unread
    Descriptor watch_;
};

}  // namespace pagersim

#endif
