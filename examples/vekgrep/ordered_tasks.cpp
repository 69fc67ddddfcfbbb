// SPDX-License-Identifier: MIT
#include "ordered_tasks.h"

#include <new>
#include <system_error>
#include <utility>

#include "common/platform.h"

namespace examples::vekgrep {
namespace {

constexpr size_t kMostHeldOfOne = 1 << 20;  // bytes that a task prints before its turn
constexpr size_t kMostHeld = 16 << 20;      // of all tasks that are done
constexpr size_t kMostDone = 1024;
constexpr size_t kMostWaiting = 256;
constexpr size_t kFewWaiting = 4;  // not worth a further thread

}  // namespace

// What a task prints, and where that goes.
class OrderedTasks::Turn : public Sink {
 public:
  Turn(OrderedTasks& all, Waiting next)
      : owner(all), ticket(next.ticket), task(std::move(next.task)) {}

  void Run(const SearchTools& tools) { task->Run(tools, *this); }

  void Write(int file, const char* bytes, size_t size) override {
    Hold({file, false, std::string(bytes, size)});
  }

  void WriteBetween(const char* bytes, size_t size) override {
    Hold({kStandardOutput, true, std::string(bytes, size)});
  }

  bool Failed() const override { return owner.streams.Failed(); }

  // Its turn has come, and it has ended.
  void End() {
    Release();
    task->Deliver(owner.streams);
  }

  int64_t Ticket() const { return ticket; }
  size_t Held() const { return held; }

 private:
  struct Piece {
    int file;
    bool between;  // groups
    std::string bytes;
  };

  void Hold(Piece piece) {
    held += piece.bytes.size();
    pieces.push_back(std::move(piece));
    hasTurn = hasTurn || owner.turn == ticket;
    if (!hasTurn && held > kMostHeldOfOne) {
      Lock lock(owner.mutex);
      owner.changed.wait(lock, [this] { return owner.turn == ticket; });
      hasTurn = true;
    }
    if (hasTurn) {
      Release();
    }
  }

  void Release() {
    counts = counts && (asked || task->Counts());
    asked = true;
    for (const Piece& piece : pieces) {
      if (!counts) {
        break;
      }
      if (piece.between) {
        owner.streams.WriteBetween(piece.bytes.data(), piece.bytes.size());
      } else {
        owner.streams.Write(piece.file, piece.bytes.data(), piece.bytes.size());
      }
    }
    pieces.clear();
    held = 0;
  }

  OrderedTasks& owner;
  const int64_t ticket;
  const std::unique_ptr<Task> task;
  std::vector<Piece> pieces;
  size_t held = 0;
  bool hasTurn = false;
  bool asked = false;
  bool counts = true;
};

OrderedTasks::OrderedTasks(Sink& standardStreams, size_t threadsWanted, MakeTools make)
    : streams(standardStreams),
      mostThreads(threadsWanted),
      makeTools(std::move(make)),
      ownTools(makeTools()) {}

OrderedTasks::~OrderedTasks() {
  {
    const Lock lock(mutex);
    closed = true;
    waiting.clear();
  }
  changed.notify_all();
  for (std::thread& thread : threads) {
    thread.join();
  }
}

void OrderedTasks::Add(std::unique_ptr<Task> task) {
  if (mostThreads == 1) {
    task->Run(*ownTools, streams);
    task->Deliver(streams);
    return;
  }
  const bool isLarge = task->IsLarge();
  Lock lock(mutex);
  waiting.push_back({tickets++, std::move(task)});
  if (threads.size() + 1 < mostThreads && (isLarge || waiting.size() >= kFewWaiting)) {
    AddThread();
  }
  changed.notify_one();
  while (waiting.size() >= kMostWaiting) {
    changed.wait(lock, [this] { return MayTake() || waiting.size() < kMostWaiting; });
    if (MayTake()) {
      RunOne(lock, *ownTools);
    }
  }
}

// Where the system has no further thread, those that there are do.
void OrderedTasks::AddThread() {
  try {
    threads.emplace_back(&OrderedTasks::Work, this);
  } catch (const std::system_error&) {
    static_cast<void>(threads);
  }
}

void OrderedTasks::Finish() {
  Lock lock(mutex);
  while (!waiting.empty()) {
    changed.wait(lock, [this] { return MayTake() || waiting.empty(); });
    if (MayTake()) {
      RunOne(lock, *ownTools);
    }
  }
  changed.wait(lock, [this] { return turn == tickets; });
  if (outOfMemory) {
    throw std::bad_alloc();
  }
}

// Whoever is next may always go on; the others, unless too much is held already.
bool OrderedTasks::MayTake() const {
  return !waiting.empty() &&
         (waiting.front().ticket == turn || (done.size() < kMostDone && heldBytes < kMostHeld));
}

void OrderedTasks::RunOne(Lock& lock, const SearchTools& tools) {
  auto own = std::make_unique<Turn>(*this, std::move(waiting.front()));
  waiting.pop_front();
  lock.unlock();
  try {
    own->Run(tools);
  } catch (const std::bad_alloc&) {
    outOfMemory = true;
  }
  lock.lock();
  heldBytes += own->Held();
  const int64_t ticket = own->Ticket();
  done.emplace(ticket, std::move(own));
  Deliver(lock);
  changed.notify_all();
}

// One thread at a time writes, without keeping the others from work.
void OrderedTasks::Deliver(Lock& lock) {
  if (std::exchange(delivering, true)) {
    return;
  }
  for (auto next = done.find(turn); next != done.end(); next = done.find(turn)) {
    const std::unique_ptr<Turn> own = std::move(next->second);
    done.erase(next);
    heldBytes -= own->Held();
    lock.unlock();
    own->End();
    lock.lock();
    ++turn;
    changed.notify_all();
  }
  delivering = false;
}

void OrderedTasks::Work() {
  std::unique_ptr<SearchTools> tools;
  try {
    tools = makeTools();
  } catch (const std::bad_alloc&) {
    return;  // the others do its work
  }
  Lock lock(mutex);
  for (;;) {
    changed.wait(lock, [this] { return closed || MayTake(); });
    if (closed) {
      return;
    }
    RunOne(lock, *tools);
  }
}

}  // namespace examples::vekgrep
