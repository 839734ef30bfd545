// Where pagersim writes.
#ifndef PAGERFWD_SIM_RUNNER_OUTPUT_H
#define PAGERFWD_SIM_RUNNER_OUTPUT_H

#include <cstdio>
#include <memory>
#include <string>

namespace pagersim {

// A file, standard output ("-") or nothing ("").
//
// Errors     Throws UsageError when the file can't be written.
class Output {
 public:
    explicit Output(const std::string& path);

    void Write(const std::string& text);

 private:
    const bool to_screen_;
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_{nullptr, std::fclose};
};

}  // namespace pagersim

#endif
