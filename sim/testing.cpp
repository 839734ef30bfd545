// The test programs' side of the simulation. Tested by tests/unit/sim/.
#include "sim/testing.h"

#include <algorithm>
#include <stdexcept>

#include "sim/script.h"
#include "sim/world/world.h"

namespace pagersim {
namespace {

constexpr time_t kWeek = time_t{7} * 24 * 60 * 60;

// The latest instant a clock of this process has shown; 0: none yet.
time_t latest_shown = 0;

time_t NextStart() {
    time_t start = VirtualClock::kDefaultStart;
    while (start <= latest_shown) {
        start += kWeek;
    }
    return start;
}

time_t WallSeconds() {
    return static_cast<time_t>(
        std::chrono::duration_cast<std::chrono::seconds>(TheWorld().WallNow()).count());
}

void NoteShown() {
    latest_shown = std::max(latest_shown, WallSeconds());
}

}  // namespace

VirtualClock::VirtualClock(time_t start) {
    if (World::IsActive()) {
        throw std::logic_error("there is a virtual clock already");
    }
    TheWorld().Start(start != 0 ? start : NextStart());
}

VirtualClock::~VirtualClock() {
    NoteShown();
    TheWorld().Stop();
}

Milliseconds VirtualClock::Now() {
    return std::chrono::floor<Milliseconds>(TheWorld().Now());
}

std::chrono::microseconds VirtualClock::NowExactly() {
    return TheWorld().Now();
}

void VirtualClock::Set(time_t wall) {
    NoteShown();
    TheWorld().SetWall(wall);
}

void VirtualClock::SetStep(Milliseconds step) {
    TheWorld().SetStep(step);
}

void VirtualClock::SetPatience(Milliseconds real) {
    const Locked locked;
    TheWorld().Threads().SetPatience(real);
}

namespace {

int CheckedPort(int com) {
    if (!World::IsActive()) {
        throw std::logic_error("a simulated line needs a virtual clock");
    }
    if (com < 1 || com > kLines) {
        throw std::out_of_range("a simulated line is on COM1 to COM64");
    }
    return com;
}

// Answers `value` of the line; that of no line at all when its clock has gone.
template <typename Value>
Value Ask(int com, Value (*value)(const Line&)) {
    const Locked locked;
    const Line* const line = TheWorld().LineOn(com);
    return line != nullptr ? value(*line) : Value{};
}

}  // namespace

AttachedLine::AttachedLine(int com, std::unique_ptr<FarEnd> far_end) : com_(CheckedPort(com)) {
    TheWorld().AddLine(com_, std::move(far_end));
}

AttachedLine::~AttachedLine() {
    TheWorld().RemoveLine(com_);
}

void AttachedLine::PlugOut() {
    const Locked locked;
    if (Line* const line = TheWorld().LineOn(com_)) {
        line->PlugOut();
    }
}

void AttachedLine::PlugIn() {
    const Locked locked;
    if (Line* const line = TheWorld().LineOn(com_)) {
        line->PlugIn();
    }
}

termios AttachedLine::Settings() const {
    return Ask<termios>(com_, [](const Line& line) { return line.Settings(); });
}

int AttachedLine::Opens() const {
    return Ask<int>(com_, [](const Line& line) { return line.Opens(); });
}

int AttachedLine::Closes() const {
    return Ask<int>(com_, [](const Line& line) { return line.Closes(); });
}

bool IsInSimulation() {
    return IsInside();
}

ScriptedLine::ScriptedLine(int com) {
    auto script = std::make_unique<Script>();
    script_ = script.get();
    line_ = std::make_unique<AttachedLine>(com, std::move(script));
}

ScriptedLine::~ScriptedLine() = default;

ScriptedLine& ScriptedLine::Hears(std::string_view bytes) {
    const Locked locked;
    script_->AddHears(bytes);
    return *this;
}

ScriptedLine& ScriptedLine::HearsAnything(size_t count) {
    const Locked locked;
    script_->AddHearsAnything(count);
    return *this;
}

ScriptedLine& ScriptedLine::Says(std::string_view bytes, Milliseconds after) {
    const Locked locked;
    script_->AddSays(bytes, after);
    return *this;
}

ScriptedLine& ScriptedLine::Vanishes(Milliseconds after) {
    const Locked locked;
    script_->AddVanishes(after);
    return *this;
}

void ScriptedLine::PlugOut() {
    line_->PlugOut();
}

void ScriptedLine::PlugIn() {
    line_->PlugIn();
}

std::string ScriptedLine::Verdict() const {
    const Locked locked;
    return script_->Verdict();
}

std::string ScriptedLine::Heard() const {
    const Locked locked;
    return script_->AllHeard();
}

termios ScriptedLine::Settings() const {
    return line_->Settings();
}

int ScriptedLine::Opens() const {
    return line_->Opens();
}

int ScriptedLine::Closes() const {
    return line_->Closes();
}

}  // namespace pagersim
