// A site to click through: a month of its life, simulated within seconds, which then goes on alive.
// The library, the node and its lines do all of it, and `pagersim` is their telephone network: the
// pages are as real as any.
//
// In a folder of its own. It is gone, with all processes, when the object ends.
//
// Errors     Failure: what it needs isn't there, or it was asked to end before it was there.
#ifndef PAGERFWD_HOST_CLI_WEB_DEMO_H
#define PAGERFWD_HOST_CLI_WEB_DEMO_H

#include <sys/types.h>

#include <ctime>
#include <string>
#include <vector>

#include "host/process/stop_signal.h"

namespace host {

class WebDemo {
 public:
    // library: what the engine loads; empty: what it finds.
    explicit WebDemo(std::string library);

    const std::string& Database() const { return database_; }
    // A token of somebody who may do everything.
    std::string Token() const;

 private:
    // Is removed at the end, with all that is in it.
    class Folder {
     public:
        Folder();
        ~Folder();
        Folder(const Folder&) = delete;
        Folder& operator=(const Folder&) = delete;
        const std::string& Path() const { return path_; }

     private:
        std::string path_;
    };
    // Each with a process group of its own. They are asked to end at the end, the last first.
    class Processes {
     public:
        Processes() = default;
        ~Processes();
        Processes(const Processes&) = delete;
        Processes& operator=(const Processes&) = delete;
        // What it says goes into the file.
        void Start(const std::vector<std::string>& command, const std::string& log);
        // Until the one that was started last has ended. False: the end is asked for.
        bool AwaitLast(StopSignal& stop);

     private:
        std::vector<pid_t> processes_;
    };

    void MakeSite() const;
    void LiveThroughAMonth();
    bool LiveThroughADay(int day, std::time_t begin, StopSignal& stop);
    void GoOn();
    std::vector<std::string> Engine(const char* option) const;
    void Link(const std::string& line, const std::string& device) const;
    void Write(const std::string& name, const std::string& text) const;
    std::string File(const std::string& name) const { return folder_.Path() + "/" + name; }

    const Folder folder_;
    const std::string library_;
    const std::string database_;
    Processes processes_;
};

}  // namespace host

#endif
