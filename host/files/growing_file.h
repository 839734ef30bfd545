// Reads a file that another part of the process writes, as it grows.
//
// The file may be emptied and begun anew, and may be moved aside; those moved aside are read first.
// What was written before it is emptied and not yet read is lost. Only a regular file is read, and
// no link to one: others never end, or hold up who opens them.
//
// Threads    One.
#ifndef PAGERFWD_HOST_FILES_GROWING_FILE_H
#define PAGERFWD_HOST_FILES_GROWING_FILE_H

#include <sys/types.h>

#include <ctime>
#include <string>

namespace host {

class GrowingFile {
 public:
    explicit GrowingFile(std::string path) : path_(std::move(path)) {}
    ~GrowingFile();
    GrowingFile(const GrowingFile&) = delete;
    GrowingFile& operator=(const GrowingFile&) = delete;

    // What has come since the last call, at most 1 MiB: "" when there is nothing, or no file.
    std::string Read();

    // Bytes read of the file as it is now.
    off_t Position() const { return position_; }

    // Moves the file aside, to path + ".1"; what lies there goes to ".2", and so on to ".5". What
    // its writer adds to it still, is read. Does nothing where there is no file, or an empty one.
    void MoveAside();

    // Adds the file to the one that was moved aside last, and removes it; where that would become
    // larger than `most` bytes, or was begun more than `oldest` seconds ago, moves it aside.
    void JoinAside(off_t most, std::time_t oldest);

 private:
    bool TryJoin(off_t most, std::time_t oldest) const;
    bool Open(const std::string& path);
    bool IsOpenOne(const std::string& path) const;
    std::string ReadOpenOne();
    std::string Aside(int number) const;
    std::string Successor() const;
    void Close();

    const std::string path_;
    int file_ = -1;
    off_t position_ = 0;
};

}  // namespace host

#endif
