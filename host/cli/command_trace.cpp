// pagerfwd trace: traces as a dialogue. Tested by tests/unit/host/cli_trace_test.cpp.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstring>
#include <deque>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "host/cli/names.h"
#include "host/cli/numbers.h"
#include "host/cli/program.h"
#include "host/cli/progress.h"
#include "host/lines/line_folder.h"
#include "host/lines/site_lines.h"
#include "host/site/site_tables.h"
#include "host/store/database_name.h"
#include "host/store/look.h"
#include "host/text/colours.h"
#include "host/text/encoding.h"
#include "host/text/printable.h"
#include "host/trace/join_traces.h"
#include "host/trace_view/page_filter.h"
#include "host/trace_view/page_json.h"
#include "host/trace_view/page_svg.h"
#include "host/trace_view/page_text.h"

namespace host {
namespace {

struct TraceOptions {
    std::string file;  // empty: the lines' own
    std::string line;  // empty: all
    std::string pager;
    std::string since;
    std::string until;
    uint64_t page = 0;
    bool failed = false;
    bool brief = false;
    bool all = false;
    bool json = false;
    std::string svg;
    std::string encoding;  // empty: the site's
};

// What is to be read.
struct TraceFiles {
    struct OfLine {
        std::string line;  // as the tables have it; empty: not known
        std::string path;
    };
    std::string name;  // of all of them, for messages
    Encoding encoding = Encoding::kLatin1;
    std::vector<OfLine> files;
};

TraceFiles OneFile(const std::string& path) {
    return {path, Encoding::kLatin1, {{"", path}}};
}

TraceFiles FilesOfSite(Connection& connection, const Program& program, const std::string& line) {
    TraceFiles found{"the trace of all lines", EncodingOf(connection), {}};
    const std::string asked = InTables(line, found.encoding);
    for (const SiteLine& one : SiteLines(connection)) {
        const std::string path = LineFolder(program.database, one.name) + "/" + kTraceFile;
        const bool wanted = line.empty() ? std::filesystem::exists(path) : one.name == asked;
        if (wanted) {
            found.files.push_back({one.name, path});
        }
    }
    return found;
}

// The traces of the site's lines; that of this folder where none of them has one.
TraceFiles FilesOfLines(const Program& program, const std::string& line) {
    if (line.empty() && !IsOnServer(program.database) &&
        !std::filesystem::exists(program.database)) {
        return OneFile(kTraceFile);
    }
    TraceFiles found = Look(program.database, [&](Connection& connection) {
        return FilesOfSite(connection, program, line);
    });
    if (found.files.empty() && !line.empty()) {
        throw Failure(kUsage, "the site has no port \"" + line + "\"");
    }
    if (!line.empty()) {
        found.name = found.files.front().path;
    }
    if (found.files.empty()) {
        found.name = kTraceFile;
        found.files = OneFile(kTraceFile).files;
    }
    return found;
}

Encoding EncodingAskedFor(const std::string& name) {
    if (const std::optional<Encoding> encoding = EncodingNamed(name)) {
        return *encoding;
    }
    throw Failure(kUsage, "there is no encoding \"" + name +
                              "\"; write --encoding latin1 or --encoding shift_jis");
}

TraceFiles FilesFor(const Program& program, const TraceOptions& options) {
    TraceFiles files =
        options.file.empty() ? FilesOfLines(program, options.line) : OneFile(options.file);
    if (!options.encoding.empty()) {
        files.encoding = EncodingAskedFor(options.encoding);
    }
    return files;
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
        throw Failure(kUsage, std::string("no pager of a site in this encoding") +
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
    Viewer(const TraceOptions& options, const TraceFiles& files)
        : options_(options),
          name_(files.name),
          encoding_(files.encoding),
          filter_(FilterFor(options, files.encoding)),
          text_(files.encoding, Colours::For(STDOUT_FILENO)) {}

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
            throw Failure(kUsage, name_ + " has " + std::to_string(pages_) +
                                      " page(s), and no page " + std::to_string(options_.page));
        }
        if (!options_.svg.empty()) {
            WriteSvg();
        } else if (options_.json) {
            std::cout << (taken_ == 0 ? "[]\n" : "\n]\n");
        } else if (taken_ == 0) {
            std::cerr << "pagerfwd: " << Printable(name_) << ": none of its " << pages_
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
    const std::string name_;
    Encoding encoding_;
    PageFilter filter_;
    PageText text_;
    uint64_t pages_ = 0;
    uint64_t taken_ = 0;
    std::string svg_;
};

// What is read stays open for as long as this lives.
class OpenTraces {
 public:
    explicit OpenTraces(const TraceFiles& traces) {
        for (const TraceFiles::OfLine& trace : traces.files) {
            traces_.push_back({trace.line, Open(trace.path)});
        }
    }

    const std::vector<TraceOfLine>& Traces() const { return traces_; }
    uint64_t Size() const { return size_; }

 private:
    std::istream& Open(const std::string& path) {
        if (path == kStandardInput) {
            return std::cin;
        }
        std::ifstream& file = files_.emplace_back(path, std::ios::binary);
        // A folder opens, and fails only when it is read.
        if (!file || (file.peek() == std::ifstream::traits_type::eof() && file.bad())) {
            throw Failure(kCannot, path + ": can't be read: " + std::strerror(errno) +
                                       "; a trace is written by: pagerfwd --trace test PAGER");
        }
        std::error_code none;
        const uintmax_t size = std::filesystem::file_size(path, none);
        size_ += none ? 0 : size;
        return file;
    }

    std::deque<std::ifstream> files_;
    std::vector<TraceOfLine> traces_;
    uint64_t size_ = 0;
};

ExitCode Trace(const Program& program, const TraceOptions& options) {
    if (!options.svg.empty() && options.page == 0) {
        throw Failure(kUsage, "--svg draws one page: say which, with --page N");
    }
    const TraceFiles files = FilesFor(program, options);
    Viewer viewer(options, files);
    const OpenTraces open(files);
    {
        Progress progress(files.name == kStandardInput ? "standard input" : files.name,
                          open.Size());
        JoinTraces(open.Traces(), viewer, [&progress](size_t count) {
            progress.Add(count);
            return static_cast<bool>(std::cout);
        });
    }
    viewer.End();
    return kDone;
}

}  // namespace

void AddTrace(CLI::App& app, Program& program) {
    CLI::App* const command =
        app.add_subcommand("trace", "Show a trace of the library as a dialogue, page by page");
    const auto options = std::make_shared<TraceOptions>();
    auto* const file = command->add_option("FILE", options->file, "A trace; - for standard input");
    command->add_option("--line", options->line, "Only the trace of this line")
        ->type_name("LINE")
        ->excludes(file);
    command->add_option("--pager", options->pager, "Only pages to this pager")->type_name("NAME");
    command->add_flag("--failed", options->failed, "Only pages that were not sent");
    command->add_option("--since", options->since, "Only pages that began at this time or later")
        ->type_name("TIME");
    command->add_option("--until", options->until, "Only pages that began at this time or before")
        ->type_name("TIME");
    command
        ->add_option("--page", options->page, "Only this page, as they are counted in what is read")
        ->type_name("N")
        ->check(NumberFrom(1));
    command->add_flag("--brief", options->brief, "A line for each page, without its dialogue");
    command->add_flag("--all", options->all, "Also what the engine says between pages");
    auto* const json = command->add_flag("--json", options->json, "The pages as a JSON array");
    command->add_option("--svg", options->svg, "Draw the page of --page N into this file")
        ->type_name("FILE")
        ->excludes(json);
    command
        ->add_option("--encoding", options->encoding,
                     "Of a FILE: latin1, unless said otherwise, or shift_jis")
        ->type_name("NAME");
    command->footer(
        "Without FILE, the traces of all lines of the site, which lie beside the database, as one "
        "in\n"
        "the order of time, each page with its line; pageprot.txt in this folder where there are\n"
        "none. What was moved aside is read by its name.\n\n"
        "> is what was sent, < what the modem or the centre said; times count from the page's\n"
        "beginning. A line that is not the library's stands behind a question mark. A TIME is\n"
        "written as 2001-01-08 or \"2001-01-08 17:30:00\".\n\n"
        "Examples:\n"
        "  pagerfwd trace\n"
        "  pagerfwd trace --line \"COM 1\" --brief\n"
        "  pagerfwd trace pageprot.txt --brief --failed\n"
        "  pagerfwd trace --pager \"duty phone\" --since 2001-01-08\n"
        "  pagerfwd trace --page 3 --svg page3.svg\n"
        "  pagerfwd trace --json --failed | jq '.[].reason'\n");
    command->callback([options, &program] {
        program.command = [options, &program] { return Trace(program, *options); };
    });
}

}  // namespace host
