// The timeline of a page. Tested by tests/unit/host/trace_view_test.cpp.
#include "host/trace_view/page_svg.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include "host/text/printable.h"
#include "host/trace_view/page_text.h"
#include "host/trace_view/svg_writer.h"

namespace host {
namespace {

constexpr int kWidth = 960;
constexpr int kLeft = 90;
constexpr int kRight = kWidth - 30;
constexpr int kTitleHeight = 44;
constexpr int kLineHeight = 18;
// From the title's end on.
constexpr int kPhasesY = 26;
constexpr int kLanesY = 66;
constexpr int kLaneHeight = 20;
constexpr int kRowsY = 186;
constexpr int kRowHeight = 24;
constexpr size_t kMostRows = 400;
constexpr size_t kMostInRow = 100;
constexpr size_t kMostInTitle = 110;

constexpr const char* kGrey = "#777";
constexpr const char* kPale = "#ddd";
constexpr const char* kOurs = "#1565c0";
constexpr const char* kTheirs = "#2e7d32";
constexpr const char* kVain = "#c62828";      // of pages that failed, and only there
constexpr const char* kNoMatter = "#ffb300";  // in vain too, but the page came through
constexpr const char* kFound = "#9ccc65";
constexpr const char* kPause = "#bdbdbd";
constexpr std::array<const char*, kPagePhases> kPhaseColours = {"#cfd8dc", "#ffe0b2", "#bbdefb",
                                                                "#c8e6c9", "#e1bee7"};

bool BeginsCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
}

// Where the text is to be broken: behind a blank, if there is one, and in any case between two
// characters of UTF-8.
size_t EndOfLine(std::string_view text, size_t most) {
    size_t characters = 0;
    size_t end = 0;
    for (; end < text.size(); ++end) {
        if (BeginsCharacter(text[end]) && ++characters > most) {
            break;
        }
    }
    if (end == text.size()) {
        return end;
    }
    const size_t blank = text.substr(0, end).rfind(' ');
    return blank == std::string_view::npos || blank == 0 ? end : blank + 1;
}

std::vector<std::string> InLines(std::string_view text, size_t most) {
    std::vector<std::string> lines;
    while (!text.empty()) {
        const size_t end = EndOfLine(text, most);
        lines.emplace_back(text.substr(0, end));
        text.remove_prefix(end);
    }
    return lines;
}

class Timeline {
 public:
    Timeline(const TracedPage& page, Encoding encoding) : page_(page), encoding_(encoding) {}

    std::string Draw() {
        DrawTitle();
        DrawPhases();
        DrawLanes();
        return svg_.Document(kWidth, DrawRows() + kRowHeight);
    }

 private:
    std::string Shown(std::string_view text) const { return Printable(Decode(text, encoding_)); }

    int At(int second) const {
        return kLeft + (kRight - kLeft) * second / std::max(page_.seconds, 1);
    }

    void DrawTitle() {
        svg_.Text(kLeft, 24, Shown(page_.pager) + "  " + Shown(page_.number_called), kMostInTitle,
                  "#222", "start", "font-size:16px;font-weight:bold");
        std::string below = WhenBegun(page_) + ", " + std::to_string(page_.seconds) + " s, ";
        below += page_.Port().empty() ? "" : Shown(page_.Port()) + ", ";
        below += std::string(NameOf(page_.outcome));
        below += page_.reason.empty() ? "" : ": " + Shown(page_.reason);
        DrawWhole(below, Failed() ? kVain : kTheirs);
    }

    // In as many lines as it takes.
    void DrawWhole(const std::string& text, const char* colour) {
        for (const std::string& line : InLines(text, kMostInTitle)) {
            svg_.Text(kLeft, title_end_, line, kMostInTitle, colour);
            title_end_ += kLineHeight;
        }
        title_end_ -= kLineHeight;
    }

    bool Failed() const {
        return page_.outcome == TracedPage::Outcome::kNotSent ||
               page_.outcome == TracedPage::Outcome::kCutOff;
    }

    void DrawPhases() {
        int begun = 0;
        for (size_t phase = 0; phase < kPagePhases; ++phase) {
            const int seconds = page_.phase_seconds.at(phase);
            const std::string label = std::string(NameOf(static_cast<PagePhase>(phase))) + " " +
                                      std::to_string(seconds) + " s";
            const int x = At(begun);
            const int width = At(begun + seconds) - x;
            if (seconds > 0) {
                svg_.Bar({x, title_end_ + kPhasesY, width, 24}, kPhaseColours.at(phase), label);
                // Seven pixels a character.
                svg_.Text(x + 4, title_end_ + kPhasesY + 16, label,
                          static_cast<size_t>(std::max(width - 14, 0)) / 7);
            }
            begun += seconds;
        }
    }

    void DrawLanes() {
        constexpr std::array<const char*, 3> kLanes = {"we", "far end", "waiting"};
        for (size_t lane = 0; lane < kLanes.size(); ++lane) {
            const int y = LaneY(static_cast<int>(lane));
            svg_.Text(kLeft - 8, y + 14, kLanes.at(lane), kMostInRow, kGrey, "end");
            svg_.Line(kLeft, y + kLaneHeight, kRight, y + kLaneHeight, kPale);
        }
        for (const Turn& turn : page_.turns) {
            DrawInLane(turn);
        }
        DrawScale();
    }

    int LaneY(int lane) const { return title_end_ + kLanesY + lane * (kLaneHeight + 4); }

    void DrawInLane(const Turn& turn) {
        const int x = At(turn.from);
        const std::string title = Describe(turn);
        constexpr int kTick = 3;
        switch (turn.kind) {
            case Turn::Kind::kSaid:
                svg_.Bar({x, LaneY(0) + 2, kTick, kLaneHeight - 4}, kOurs, title);
                break;
            case Turn::Kind::kHeard:
                svg_.Bar({x, LaneY(1) + 2, kTick, kLaneHeight - 4}, kTheirs, title);
                break;
            case Turn::Kind::kWaited:
            case Turn::Kind::kPaused:
                svg_.Bar({x, LaneY(2) + 2, std::max(At(turn.to) - x, 1), kLaneHeight - 4},
                         ColourOfWait(turn), title);
                break;
            case Turn::Kind::kFailure:
            case Turn::Kind::kUnknown:
                break;
        }
    }

    // About ten ticks, at whole and round seconds.
    void DrawScale() {
        int step = 1;
        for (const int candidate : {1, 2, 5, 10, 20, 30, 60, 120, 300, 600, 1800, 3600}) {
            step = candidate;
            if (page_.seconds / candidate <= 12) {
                break;
            }
        }
        step = std::max(step, page_.seconds / 12);
        const int y = LaneY(3);
        for (int second = 0; second <= page_.seconds; second += step) {
            svg_.Line(At(second), y, At(second), y + 5, kGrey);
            svg_.Text(At(second), y + 18, Duration(second), kMostInRow, kGrey, "middle");
        }
    }

    const char* ColourOfFailure() const { return Failed() ? kVain : kNoMatter; }

    const char* ColourOfWait(const Turn& turn) const {
        if (turn.kind == Turn::Kind::kPaused) {
            return kPause;
        }
        return turn.found ? kFound : ColourOfFailure();
    }

    std::string Describe(const Turn& turn) const {
        const std::string seconds = std::to_string(turn.to - turn.from) + " s";
        switch (turn.kind) {
            case Turn::Kind::kWaited:
                return "waited " + seconds + " for " + Shown(turn.text) +
                       (turn.found ? "" : ", in vain");
            case Turn::Kind::kPaused:
                return "paused " + seconds;
            case Turn::Kind::kSaid:
            case Turn::Kind::kHeard:
            case Turn::Kind::kFailure:
            case Turn::Kind::kUnknown:
                break;
        }
        return Shown(turn.text);
    }

    // Returns where the rows end.
    int DrawRows() {
        int y = title_end_ + kRowsY;
        svg_.Text(kLeft, y - 12, "pagerfwd", kMostInRow, kOurs, "middle");
        svg_.Text(kRight, y - 12, "modem, centre", kMostInRow, kTheirs, "end");
        const int top = y;
        size_t rows = 0;
        for (const Turn& turn : page_.turns) {
            if (turn.kind == Turn::Kind::kWaited && turn.found && turn.from == turn.to) {
                continue;
            }
            if (++rows > kMostRows) {
                break;
            }
            DrawRow(turn, y);
            y += kRowHeight;
        }
        const size_t missing = page_.turns_left_out + (rows > kMostRows ? 1 : 0);
        if (missing > 0) {
            svg_.Text(kLeft + 10, y + 14, "... and more", kMostInRow, kGrey);
            y += kRowHeight;
        }
        svg_.Line(kLeft, top, kLeft, y, kPale);
        svg_.Line(kRight, top, kRight, y, kPale);
        return y;
    }

    void DrawRow(const Turn& turn, int y) {
        const int base = y + 14;
        svg_.Text(kLeft - 12, base, Duration(turn.to), kMostInRow, kGrey, "end");
        switch (turn.kind) {
            case Turn::Kind::kSaid:
                svg_.Text(kLeft + 14, base, Describe(turn), kMostInRow, kOurs);
                svg_.Arrow(kLeft, kRight, y + 19, kOurs);
                break;
            case Turn::Kind::kHeard:
                svg_.Text(kRight - 14, base, Describe(turn), kMostInRow, kTheirs, "end");
                svg_.Arrow(kRight, kLeft, y + 19, kTheirs);
                break;
            case Turn::Kind::kWaited:
            case Turn::Kind::kPaused:
                svg_.Bar({kLeft - 3, y, 6, kRowHeight}, ColourOfWait(turn), Describe(turn));
                svg_.Text(kLeft + 14, base, Describe(turn), kMostInRow, kGrey);
                break;
            case Turn::Kind::kFailure:
                svg_.Text(kLeft + 14, base, Describe(turn), kMostInRow, ColourOfFailure(), "start",
                          "font-weight:bold");
                break;
            case Turn::Kind::kUnknown:
                svg_.Text(kLeft + 14, base, Describe(turn), kMostInRow, kGrey, "start",
                          "font-style:italic");
                break;
        }
    }

    const TracedPage& page_;
    Encoding encoding_;
    SvgWriter svg_;
    int title_end_ = kTitleHeight;
};

}  // namespace

std::string PageAsSvg(const TracedPage& page, Encoding encoding) {
    return Timeline(page, encoding).Draw();
}

}  // namespace host
