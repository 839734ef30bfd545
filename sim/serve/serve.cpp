// Serving an exchange. Tested by tests/unit/sim/serve_test.cpp.
#include "sim/serve/serve.h"

#include <poll.h>
#include <sys/signalfd.h>

#include <algorithm>
#include <csignal>
#include <ctime>
#include <deque>
#include <filesystem>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <set>
#include <vector>

#include "sim/descriptor.h"
#include "sim/file/build_exchange.h"
#include "sim/file/exchange_file.h"
#include "sim/record/transcript.h"
#include "sim/runner/report.h"
#include "sim/serve/real_time.h"
#include "sim/serve/served_line.h"
#include "sim/serve/served_link.h"

namespace pagersim {
namespace {

// How often an open line is looked at without a reason, for what a program sets.
constexpr Milliseconds kLook{100};
constexpr Milliseconds kIdle{60'000};
constexpr Milliseconds kSilence{250};  // behind which a line of the dialogue is shown

// What happens, shown at once.
class Shown : public Recorder {
 public:
    explicit Shown(bool quiet) : quiet_(quiet) {}

    void Record(const Event& event) override {
        report_.Add(event);
        Show(transcript_.Add(event));
        latest_ = event.at;
    }

    // What was said some time ago is complete, whoever speaks next.
    void CatchUp(Milliseconds now) {
        if (now - latest_ >= kSilence) {
            Show(transcript_.Finish());
        }
    }

    void Finish(const std::vector<std::string>& centres) {
        Show(transcript_.Finish());
        Show(DescribePages(centres, report_, "time"));
    }

    void Show(const std::string& text) const {
        if (!quiet_ && !text.empty()) {
            std::cout << text << std::flush;
        }
    }

 private:
    const bool quiet_;
    Transcript transcript_;
    Report report_;
    Milliseconds latest_{0};
};

// SIGTERM and SIGINT, as something to wait for. They stay blocked: the process ends behind this.
Descriptor EndAskedFor() {
    sigset_t asked;
    sigemptyset(&asked);
    sigaddset(&asked, SIGTERM);
    sigaddset(&asked, SIGINT);
    sigprocmask(SIG_BLOCK, &asked, nullptr);
    return Descriptor(signalfd(-1, &asked, SFD_CLOEXEC));
}

class Server {
 public:
    explicit Server(const ServeOptions& options)
        : options_(options), file_(LoadSoundExchange(options.exchange)), shown_(options.quiet) {
        for (const CentreEntry& centre : file_.centres) {
            exchange_.Add(BuildSubscriber(centre, start_));
        }
        if (!options_.links.empty()) {
            std::filesystem::create_directories(options_.links);
        }
        for (const LineEntry& line : file_.lines) {
            if (line.IsThereAt(start_)) {
                PlugIn(line);
            }
            PlanAt(line.there_from, [this, &line] { PlugIn(line); });
            PlanAt(line.there_until, [this, &line] { PlugOut(line); });
        }
    }

    void Run() {
        const Descriptor end = EndAskedFor();
        for (;;) {
            time_.RunDue();
            std::vector<pollfd> waiting = {{end.Number(), POLLIN, 0}};
            for (const auto& [com, line] : lines_) {
                line->AddTo(waiting);
            }
            poll(waiting.data(), waiting.size(), static_cast<int>(LongestWait().count()));
            if (waiting.front().revents != 0) {
                break;
            }
            for (const auto& [com, line] : lines_) {
                line->Look();
            }
            shown_.CatchUp(time_.Now());
        }
        shown_.Finish(CentreNames(file_));
    }

 private:
    void PlanAt(std::time_t when, std::function<void()> what) {
        if (when > start_) {
            time_.At(std::chrono::seconds(when - start_), std::move(what));
        }
    }

    void PlugIn(const LineEntry& entry) {
        const auto known = lines_.find(entry.com);
        known != lines_.end() ? known->second->PlugIn() : Add(entry);
    }

    void PlugOut(const LineEntry& entry) {
        const auto known = lines_.find(entry.com);
        if (known != lines_.end()) {
            known->second->PlugOut();
        }
    }

    void Add(const LineEntry& entry) {
        const std::string name = PortName(entry.com);
        ServedLink* link = nullptr;
        if (!options_.links.empty()) {
            links_.emplace_back(options_.links + "/ttyS" + std::to_string(entry.com - 1));
            link = &links_.back();
        }
        lines_[entry.com] = std::make_unique<ServedLine>(
            name, entry.modem, exchange_, shown_, time_,
            [this, name, link](const std::string& path) { Tell(name, link, path); });
    }

    // Also when quiet: nobody would find the line without it.
    static void TellPath(const std::string& line, const std::string& path) {
        std::cout << line << "  " << path << std::endl;
    }

    static void TellGone(const std::string& line) { std::cout << line << "  gone" << std::endl; }

    void Tell(const std::string& line, ServedLink* link, const std::string& path) {
        if (link == nullptr) {
            return path.empty() ? TellGone(line) : TellPath(line, path);
        }
        if (path.empty()) {
            return link->Remove();
        }
        const bool is_new = told_.insert(line).second;
        link->PointTo(path);
        if (is_new) {
            TellPath(line, link->Path());
        }
    }

    Milliseconds LongestWait() const {
        const bool any_open = std::any_of(lines_.begin(), lines_.end(),
                                          [](const auto& line) { return line.second->IsOpen(); });
        return time_.UntilNext(any_open ? kLook : kIdle);
    }

    const ServeOptions options_;
    const ExchangeFile file_;
    const std::time_t start_ = std::time(nullptr);
    RealTime time_;
    Shown shown_;
    Exchange exchange_;
    std::set<std::string> told_;
    std::deque<ServedLink> links_;
    std::map<int, std::unique_ptr<ServedLine>> lines_;  // by COM number
};

}  // namespace

void Serve(const ServeOptions& options) {
    Server(options).Run();
}

}  // namespace pagersim
