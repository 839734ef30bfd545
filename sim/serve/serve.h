// `pagersim serve`: an exchange in real time, on ptys that any program can open.
#ifndef PAGERFWD_SIM_SERVE_SERVE_H
#define PAGERFWD_SIM_SERVE_SERVE_H

#include <string>

namespace pagersim {

struct ServeOptions {
    std::string exchange = "exchange.toml";
    std::string links;  // a folder; empty: none are made
    bool quiet = false;
};

// Serves until SIGTERM or SIGINT. Says the path of each line first, then the dialogue as it goes,
// and at the end what each centre received. Throws std::exception for what keeps it from serving.
void Serve(const ServeOptions& options);

// The command line, which begins with "serve"; its help and mistakes included. Returns the exit
// status.
int ServeMain(int count, const char* const* arguments);

}  // namespace pagersim

#endif
