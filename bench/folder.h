// A place for the files of a measure.
#ifndef PAGERFWD_BENCH_FOLDER_H
#define PAGERFWD_BENCH_FOLDER_H

#include <filesystem>
#include <string>

namespace bench {

// A folder that goes with the object.
//
// Errors     Throws std::runtime_error when none can be made.
class Folder {
 public:
    // In `parent`; without one in memory, so that no disk is measured, where there is such a place.
    explicit Folder(const std::string& parent = "");
    ~Folder();
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    const std::filesystem::path& Path() const { return path_; }
    std::string File(const std::string& name) const { return (path_ / name).string(); }

 private:
    std::filesystem::path path_;
};

}  // namespace bench

#endif
