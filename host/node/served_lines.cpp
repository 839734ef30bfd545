// The lines of a site. Tested by tests/e2e/run_lines_test.cpp.
#include "host/node/served_lines.h"

#include <algorithm>
#include <map>
#include <optional>
#include <utility>

#include "host/store/tables/lines.h"

namespace host {
namespace {

// A line that has been well from the beginning is so since it is known.
std::time_t SinceOf(const LineHealth& health, std::time_t now) {
    return health.Since() == 0 ? now : health.Since();
}

}  // namespace

bool ServedLines::Read(Connection& connection) {
    std::vector<SiteLine> now =
        node_.empty() ? SiteLines(connection) : LinesOfNode(connection, node_);
    ending_ = false;
    std::string settings;
    for (const SiteLine& line : now) {
        settings += line.settings;
    }
    if (std::exchange(settings_, settings) == settings && !lines_.empty()) {
        return false;
    }
    for (const std::unique_ptr<ServedLine>& line : lines_) {
        line->Leave();
    }
    for (SiteLine& line : now) {
        TakeIn(connection, std::move(line));
    }
    return true;
}

// Of two rows with one name the library, too, knows the first.
void ServedLines::TakeIn(Connection& connection, SiteLine line) {
    if (ServedLine* const known = Find(line.name)) {
        known->Return(std::move(line));
        return;
    }
    std::string shown = Decode(line.name, encoding_);
    const std::optional<LineState> state = FindLine(connection, line.name);
    lines_.push_back(
        std::make_unique<ServedLine>(std::move(line), std::move(shown), command_, log_));
    lines_.back()->SetClaimed(node_.empty());
    if (state && state->health == Health::kSick) {
        lines_.back()->WasSick(state->reason, state->since);
    }
}

bool ServedLines::HaveNews(std::time_t now) const {
    return std::any_of(lines_.begin(), lines_.end(),
                       [=](const std::unique_ptr<ServedLine>& line) { return line->HasNews(now); });
}

void ServedLines::Look(Connection& connection, std::time_t now) {
    std::map<std::string, LineState> states;
    for (LineState& state : ReadLines(connection)) {
        states.emplace(state.line, state);
    }
    for (const std::unique_ptr<ServedLine>& line : lines_) {
        LookAt(*line, states[line->Line().name], connection, now);
    }
    LetGoOfThoseThatLeft(connection);
    DropThoseThatLeft();
}

void ServedLines::LookAtProcesses(std::time_t now) {
    for (const std::unique_ptr<ServedLine>& line : lines_) {
        line->Look(now);
    }
    DropThoseThatLeft();
}

void ServedLines::DropThoseThatLeft() {
    const auto has_left = [](const std::unique_ptr<ServedLine>& line) { return line->HasLeft(); };
    lines_.erase(std::remove_if(lines_.begin(), lines_.end(), has_left), lines_.end());
}

void ServedLines::LookAt(ServedLine& line, const LineState& state, Connection& connection,
                         std::time_t now) {
    line.SetPaused(state.paused);
    Claim(connection, line);
    line.Look(now);
    if (!line.IsClaimed()) {
        return;
    }
    const std::string& name = line.Line().name;
    const Health health = line.Health().IsSick() ? Health::kSick : Health::kWell;
    if (state.health != health || state.reason != line.Health().Reason()) {
        SetHealth(connection, name, health, line.Health().Reason(), SinceOf(line.Health(), now));
    }
    if (state.process != line.Process()) {
        SetProcess(connection, name, line.Process());
    }
}

// One that was another node's may still be served there, until that node reads the site anew.
void ServedLines::Claim(Connection& connection, ServedLine& line) {
    if (line.IsClaimed() || line.HasLeft()) {
        return;
    }
    const std::string& name = line.Line().name;
    line.SetClaimed(ClaimLine(connection, name, node_));
    if (line.IsClaimed()) {
        told_.erase(name);
    } else if (told_.insert(name).second) {
        log_.Warning("line \"" + Decode(name, encoding_) +
                     "\" is served by another node; it is taken as soon as that one lets go of it");
    }
}

// At the end of the node they stay its own: it may be back soon.
void ServedLines::LetGoOfThoseThatLeft(Connection& connection) {
    if (node_.empty() || ending_) {
        return;
    }
    for (const std::unique_ptr<ServedLine>& line : lines_) {
        if (line->HasLeft() && line->IsClaimed()) {
            LetGoOfLine(connection, line->Line().name, node_);
        }
    }
}

void ServedLines::SetIdle(const std::string& why) {
    for (const std::unique_ptr<ServedLine>& line : lines_) {
        line->SetIdle(why);
    }
}

void ServedLines::Sent(const Send& send, std::time_t now) {
    if (ServedLine* const line = Find(send.port)) {
        line->Sent(send, now);
    }
}

void ServedLines::AskToEnd() {
    ending_ = true;
    for (const std::unique_ptr<ServedLine>& line : lines_) {
        line->Leave();
    }
}

bool ServedLines::AnyLeft() const {
    return std::any_of(lines_.begin(), lines_.end(),
                       [](const std::unique_ptr<ServedLine>& line) { return !line->HasLeft(); });
}

ServedLine* ServedLines::Find(const std::string& name) const {
    for (const std::unique_ptr<ServedLine>& line : lines_) {
        if (line->Line().name == name) {
            return line.get();
        }
    }
    return nullptr;
}

}  // namespace host
