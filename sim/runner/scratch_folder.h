// A folder for the time of one run.
#ifndef PAGERFWD_SIM_RUNNER_SCRATCH_FOLDER_H
#define PAGERFWD_SIM_RUNNER_SCRATCH_FOLDER_H

#include <string>

namespace pagersim {

// Below TMPDIR, or /tmp. Gone, with what is in it, when this ends.
//
// Errors     Throws std::system_error when it can't be made.
class ScratchFolder {
 public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    std::string Path(const std::string& name) const { return path_ + "/" + name; }

 private:
    std::string path_;
};

}  // namespace pagersim

#endif
