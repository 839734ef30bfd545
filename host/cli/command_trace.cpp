// pagerfwd trace: a trace as a dialogue. Tested by tests/unit/host/tools_cli_test.cpp.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <system_error>

#include "host/cli/numbers.h"
#include "host/cli/program.h"
#include "host/cli/progress.h"
#include "host/text/colours.h"
#include "host/text/encoding.h"
#include "host/text/printable.h"
#include "host/trace/read_trace.h"
#include "host/trace_view/page_filter.h"
#include "host/trace_view/page_json.h"
#include "host/trace_view/page_svg.h"
#include "host/trace_view/page_text.h"

namespace host {
namespace {

struct TraceOptions {
    std::string file = "pageprot.txt";
    std::string pager;
    std::string since;
    std::string until;
    uint64_t page = 0;
    bool failed = false;
    bool brief = false;
    bool all = false;
    bool json = false;
    std::string svg;
    std::string encoding = "latin1";
};

Encoding EncodingAskedFor(const TraceOptions& options) {
    if (const std::optional<Encoding> encoding = EncodingNamed(options.encoding)) {
        return *encoding;
    }
    throw Failure(kUsage, "there is no encoding \"" + options.encoding +
                              "\"; write --encoding latin1 or --encoding shift_jis");
}

std::optional<LocalSeconds> InstantAskedFor(const char* option, const std::string& text) {
    if (text.empty()) {
        return std::nullopt;
    }
    try {
        return ParseInstant(text);
    } catch (const NoInstant& reason) {
        throw Failure(kUsage, std::string(option) + ": " + reason.what());
    }
}

PageFilter FilterFor(const TraceOptions& options, Encoding encoding) {
    PageFilter filter;
    try {
        filter.pager = Encode(options.pager, encoding);
    } catch (const NotEncodable& character) {
        throw Failure(kUsage, std::string("no pager of a site in ") + options.encoding +
                                  " has a name with " + character.what());
    }
    filter.failed = options.failed;
    filter.since = InstantAskedFor("--since", options.since);
    filter.until = InstantAskedFor("--until", options.until);
    if (options.page != 0) {
        filter.number = options.page;
    }
    return filter;
}

// What is not said of the engine unless all is asked for.
bool IsNews(TraceKind kind) {
    return kind == TraceKind::kUnknown || kind == TraceKind::kGivenUp ||
           kind == TraceKind::kAcknowledged || kind == TraceKind::kAskedUnknown ||
           kind == TraceKind::kEngineMade;
}

class Viewer : public TraceSink {
 public:
    Viewer(const TraceOptions& options, Encoding encoding)
        : options_(options),
          encoding_(encoding),
          filter_(FilterFor(options, encoding)),
          text_(encoding, Colours::For(STDOUT_FILENO)) {}

    void OnPage(const TracedPage& page) override {
        ++pages_;
        if (!filter_.Takes(page)) {
            return;
        }
        ++taken_;
        if (!options_.svg.empty()) {
            svg_ = PageAsSvg(page, encoding_);
        } else if (options_.json) {
            std::cout << (taken_ == 1 ? "[\n" : ",\n") << PageAsJson(page, encoding_);
        } else {
            std::cout << (options_.brief ? text_.Summary(page) : text_.Dialogue(page));
        }
    }

    void OnEvent(const TraceEvent& event) override {
        const bool inText = !options_.json && options_.svg.empty();
        const bool wanted =
            options_.all || (!options_.brief && filter_.TakesAll() && IsNews(event.meaning.kind));
        if (inText && wanted) {
            std::cout << text_.Event(event);
        }
    }

    void End() {
        if (options_.page > pages_) {
            throw Failure(kUsage, options_.file + " has " + std::to_string(pages_) +
                                      " page(s), and no page " + std::to_string(options_.page));
        }
        if (!options_.svg.empty()) {
            WriteSvg();
        } else if (options_.json) {
            std::cout << (taken_ == 0 ? "[]\n" : "\n]\n");
        } else if (taken_ == 0) {
            std::cerr << "pagerfwd: " << Printable(options_.file) << ": none of its " << pages_
                      << " page(s) is asked for\n";
        }
    }

 private:
    void WriteSvg() const {
        if (taken_ == 0) {
            throw Failure(kUsage, "page " + std::to_string(options_.page) +
                                      " is none of those that the other options ask for");
        }
        std::ofstream file(options_.svg, std::ios::binary);
        file << svg_ << std::flush;
        if (!file) {
            throw Failure(kCannot, options_.svg + ": can't be written: " + std::strerror(errno));
        }
        std::cout << Printable(options_.svg) << ": page " << options_.page << "\n";
    }

    const TraceOptions& options_;
    Encoding encoding_;
    PageFilter filter_;
    PageText text_;
    uint64_t pages_ = 0;
    uint64_t taken_ = 0;
    std::string svg_;
};

void ReadAll(std::istream& trace, Viewer& viewer, Progress& progress) {
    std::array<char, size_t{64} << 10> piece{};
    TraceReader reader(viewer);
    do {
        trace.read(piece.data(), piece.size());
        const auto count = static_cast<size_t>(trace.gcount());
        reader.Feed({piece.data(), count});
        progress.Add(count);
    } while (trace && std::cout);
    reader.Finish();
}

void ReadFileOf(const TraceOptions& options, Viewer& viewer) {
    std::error_code none;
    const uintmax_t size = std::filesystem::file_size(options.file, none);
    std::ifstream file(options.file, std::ios::binary);
    // A folder opens, and fails only when it is read.
    if (!file || (file.peek() == std::ifstream::traits_type::eof() && file.bad())) {
        throw Failure(kCannot, options.file + ": can't be read: " + std::strerror(errno) +
                                   "; a trace is written by: pagerfwd --trace test PAGER");
    }
    Progress progress(options.file, none ? 0 : size);
    ReadAll(file, viewer, progress);
}

ExitCode Trace(const TraceOptions& options) {
    if (!options.svg.empty() && options.page == 0) {
        throw Failure(kUsage, "--svg draws one page: say which, with --page N");
    }
    Viewer viewer(options, EncodingAskedFor(options));
    if (options.file == kStandardInput) {
        Progress progress("standard input", 0);
        ReadAll(std::cin, viewer, progress);
    } else {
        ReadFileOf(options, viewer);
    }
    viewer.End();
    return kDone;
}

}  // namespace

void AddTrace(CLI::App& app, Program& program) {
    CLI::App* const command =
        app.add_subcommand("trace", "Show a trace of the library as a dialogue, page by page");
    const auto options = std::make_shared<TraceOptions>();
    command->add_option("FILE", options->file, "The trace; - for standard input")
        ->capture_default_str();
    command->add_option("--pager", options->pager, "Only pages to this pager")->type_name("NAME");
    command->add_flag("--failed", options->failed, "Only pages that were not sent");
    command->add_option("--since", options->since, "Only pages that began at this time or later")
        ->type_name("TIME");
    command->add_option("--until", options->until, "Only pages that began at this time or before")
        ->type_name("TIME");
    command->add_option("--page", options->page, "Only this page, as they are counted in the file")
        ->type_name("N")
        ->check(NumberFrom(1));
    command->add_flag("--brief", options->brief, "A line for each page, without its dialogue");
    command->add_flag("--all", options->all, "Also what the engine says between pages");
    auto* const json = command->add_flag("--json", options->json, "The pages as a JSON array");
    command->add_option("--svg", options->svg, "Draw the page of --page N into this file")
        ->type_name("FILE")
        ->excludes(json);
    command->add_option("--encoding", options->encoding, "Of the site: latin1 or shift_jis")
        ->type_name("NAME")
        ->capture_default_str();
    command->footer(
        "> is what was sent, < what the modem or the centre said; times count from the page's\n"
        "beginning. A line that is not the library's stands behind a question mark. A TIME is\n"
        "written as 2001-01-08 or \"2001-01-08 17:30:00\".\n\n"
        "Examples:\n"
        "  pagerfwd trace\n"
        "  pagerfwd trace pageprot.txt --brief --failed\n"
        "  pagerfwd trace --pager \"duty phone\" --since 2001-01-08\n"
        "  pagerfwd trace --page 3 --svg page3.svg\n"
        "  pagerfwd trace --json --failed | jq '.[].reason'\n");
    command->callback(
        [options, &program] { program.command = [options] { return Trace(*options); }; });
}

}  // namespace host
