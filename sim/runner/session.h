// A world from its beginning to its report: what `pagersim -- COMMAND` and `pagersim world` share.
#ifndef PAGERFWD_SIM_RUNNER_SESSION_H
#define PAGERFWD_SIM_RUNNER_SESSION_H

#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include "sim/file/exchange_file.h"
#include "sim/record/transcript.h"
#include "sim/runner/options.h"
#include "sim/runner/output.h"
#include "sim/runner/processes.h"
#include "sim/runner/report.h"
#include "sim/server/served_exchange.h"
#include "sim/server/world_server.h"

namespace pagersim {

// Order      The constructor finds the user's mistakes; Begin makes the world; Finish ends it.
// Errors     Throws std::exception for what keeps it from beginning.
class Session {
 public:
    explicit Session(const RunnerOptions& options);
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // `environment` makes programs take part in a world at `socket`.
    void Begin(const std::string& socket, const Environment& environment);

    WorldServer& World() { return *world_; }
    Processes& Programs() { return *processes_; }

    // `status`: of the command. Returns that of pagersim.
    int Finish(int status);

 private:
    std::string Clock() const;
    void Happened(const Event& event);
    void Show(const std::string& lines);
    int Conclude(int status);

    const RunnerOptions& options_;
    const ExchangeFile file_;
    const std::vector<Expectation> expectations_;
    const bool checks_;
    const std::time_t start_;
    Output transcript_file_, report_file_, screen_, summary_;
    Transcript transcript_;
    Report report_;
    std::unique_ptr<WorldServer> world_;
    std::unique_ptr<Processes> processes_;
    std::unique_ptr<ServedExchange> exchange_;
};

}  // namespace pagersim

#endif
