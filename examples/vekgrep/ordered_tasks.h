// SPDX-License-Identifier: MIT

// Runs tasks on several threads, and lets what they print come out as if one thread had run them,
// one after the other.
//
// The task whose turn it is writes straight away. What the others print is held until then, up to a
// bound: a task that has more waits for its turn. As tasks are begun in their order, the one whose
// turn it is never waits.

#ifndef VEKGREP_ORDERED_TASKS_H
#define VEKGREP_ORDERED_TASKS_H

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "common/output.h"
#include "file_search.h"

namespace examples::vekgrep {

class Task {
 public:
  virtual ~Task() = default;

  // Does the work, on any thread.
  virtual void Run(const SearchTools& tools, Sink& sink) = 0;

  // Asked when its turn has come, before anything is written: whether what it printed counts.
  virtual bool Counts() { return true; }

  // Called once what it printed is out: in the order of the tasks, one at a time.
  virtual void Deliver(Sink& sink) { static_cast<void>(sink); }

  // Whether it takes long enough for a further thread.
  virtual bool IsLarge() const { return false; }
};

class OrderedTasks {
 public:
  using MakeTools = std::function<std::unique_ptr<SearchTools>()>;

  // Every thread makes tools of its own.
  OrderedTasks(Sink& streams, size_t threads, MakeTools makeTools);
  ~OrderedTasks();
  OrderedTasks(const OrderedTasks&) = delete;
  OrderedTasks& operator=(const OrderedTasks&) = delete;

  // Whether there may be more threads than the one that adds tasks.
  bool HasThreads() const { return mostThreads > 1; }

  // May run tasks before it returns.
  void Add(std::unique_ptr<Task> task);

  // Runs what is left. Memory that ran out on any thread runs out here.
  void Finish();

 private:
  class Turn;

  struct Waiting {
    int64_t ticket;
    std::unique_ptr<Task> task;
  };
  using Lock = std::unique_lock<std::mutex>;

  bool MayTake() const;
  void RunOne(Lock& lock, const SearchTools& tools);
  void Deliver(Lock& lock);
  void Work();
  void AddThread();

  Sink& streams;
  const size_t mostThreads;
  const MakeTools makeTools;
  const std::unique_ptr<SearchTools> ownTools;  // of the thread that adds tasks

  std::mutex mutex;
  std::condition_variable changed;
  std::deque<Waiting> waiting;
  int64_t tickets = 0;                            // handed out so far
  std::atomic<int64_t> turn{0};                   // the ticket whose output comes next
  std::map<int64_t, std::unique_ptr<Turn>> done;  // tasks that wait for their turn
  size_t heldBytes = 0;                           // of them
  bool delivering = false;
  bool closed = false;
  std::atomic<bool> outOfMemory{false};
  std::vector<std::thread> threads;
};

}  // namespace examples::vekgrep

#endif
