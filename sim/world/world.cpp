// The simulated world: its start and end, its lock, its registered threads.
#include "sim/world/world.h"

#include <pthread.h>

#include <cstring>
#include <string>

#include "sim/world/descriptors.h"
#include "sim/world/open_terminals.h"

namespace pagersim {
namespace {

constexpr Micros kDefaultStep = Milliseconds(10);

int64_t InMicros(time_t wall) {
    return Micros(std::chrono::seconds(wall)).count();
}

}  // namespace

World& TheWorld() {
    static World* const world = new World;  // Never destroyed: threads may outlive main.
    return *world;
}

World::World() : step_(kDefaultStep) {}

void World::Start(time_t wall) {
    const Locked locked;
    for (auto& line : lines_) {
        line.reset();
    }
    scheduler_.Reset();
    wall_at_start_ = InMicros(wall);
    step_ = kDefaultStep;
    active_ = true;
}

void World::Stop() {
    const Locked locked;
    active_ = false;
    for (auto& line : lines_) {
        line.reset();
    }
    scheduler_.Reset();
}

void World::Join(const std::string& server) {
    const Locked locked;
    link_ = std::make_unique<Link>(server);
    for (int com = 1; com <= kLines; ++com) {
        ports_.at(static_cast<size_t>(com - 1)) = std::make_unique<SharedPort>(com);
    }
    scheduler_.Share(*link_);
    Begin();
    active_ = true;
}

// A program begins in the world: this one, which may have replaced another, or a child's.
void World::Begin() {
    const std::vector<OpenTerminal> terminals = OpenTerminals();
    std::string numbers;
    for (const OpenTerminal& each : terminals) {
        numbers.append(reinterpret_cast<const char*>(&each.number), sizeof each.number);
    }
    std::string payload;
    Hear(link_->Start(numbers, &payload));
    for (size_t i = 0; (i + 1) * sizeof(Terminal) <= payload.size(); ++i) {
        Terminal terminal{};
        std::memcpy(&terminal, payload.data() + i * sizeof terminal, sizeof terminal);
        if (terminal.com != 0) {
            Descriptors::Note(terminals[i].fd, {terminal.com, terminal.connection});
        }
    }
}

Port* World::PortOn(int com) {
    if (link_ == nullptr || com < 1 || com > kLines) {
        return LineOn(com);
    }
    return ports_.at(static_cast<size_t>(com - 1)).get();
}

Reply World::Ask(const Request& request, std::string_view sent, std::string* payload) {
    scheduler_.FetchTurn();
    const Reply reply = link_->Ask(request, sent, payload);
    Hear(reply);
    return reply;
}

void World::Hear(const Reply& reply) {
    wall_at_start_ = reply.wall_at_start;
    step_ = Micros(reply.step);
    for (size_t i = 0; i < ports_.size(); ++i) {
        ports_[i]->Note(reply.lines[i]);
    }
    scheduler_.Hear(reply);
}

void World::Tell(const Request& request) {
    scheduler_.FetchTurn();
    link_->Tell(request);
}

void World::Leave() {
    const Locked locked;
    if (IsShared() && link_->HasTurn()) {
        link_->Want();
    }
}

void World::PrepareChild() {
    scheduler_.FetchTurn();
    Hear(link_->PrepareChild());
}

void World::BeginAsChild() {
    link_->Adopt();
    Begin();
}

void World::AddLine(int com, std::unique_ptr<FarEnd> far_end) {
    const Locked locked;
    Place(com) = std::make_unique<Line>(scheduler_, com, std::move(far_end));
}

void World::RemoveLine(int com) {
    const Locked locked;
    Place(com).reset();
}

void World::SetWall(time_t wall) {
    const Locked locked;
    wall_at_start_ = InMicros(wall) - Now().count();
}

bool IsServed() {
    const ProgramThread* const me = Me();
    return World::IsActive() && me != nullptr && !IsInside() && me->wait == nullptr;
}

Outside::Outside() : counts_(IsServed()) {
    if (!counts_) {
        return;
    }
    const Locked locked;
    TheWorld().Threads().GoOutside(*Me(), wait_);
}

Outside::~Outside() {
    if (!counts_) {
        return;
    }
    const Locked locked;
    TheWorld().Threads().ComeBack(*Me());
}

ProgramThread& RegisterThread(void* (*start)(void*), void* argument) {
    auto thread = std::make_unique<ProgramThread>();
    thread->start = start;
    thread->argument = argument;
    return TheWorld().Threads().Add(std::move(thread));
}

// The sanitizer's runtime doesn't know this thread yet: nothing here may need it.
void EnterThread(ProgramThread& thread) {
    {
        const Locked locked;  // Waits until the creator has noted the handle.
    }
    SetMe(&thread);
}

void LeaveThread() {
    {
        const Locked locked;
        TheWorld().Threads().End(*Me());
    }
    SetMe(nullptr);
}

namespace {

bool IsInSharedWorld() {
    return TheWorld().IsShared();
}

void BeforeFork() {
    LockForFork();
    if (IsInSharedWorld()) {
        TheWorld().PrepareChild();
    }
}

void AfterForkInParent() {
    if (IsInSharedWorld()) {
        TheWorld().Shared().ForgetChild();
    }
    UnlockAfterFork();
}

void AfterForkInChild() {
    TheWorld().Threads().KeepOnly(Me());
    if (IsInSharedWorld()) {
        TheWorld().BeginAsChild();
    }
    UnlockAfterFork();
}

}  // namespace

void RegisterMainThread() {
    ProgramThread* main_thread = nullptr;
    {
        const Locked locked;
        main_thread = &RegisterThread(nullptr, nullptr);
        main_thread->handle = pthread_self();
    }
    SetMe(main_thread);
    pthread_atfork(BeforeFork, AfterForkInParent, AfterForkInChild);
}

}  // namespace pagersim
