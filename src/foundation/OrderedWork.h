#pragma once

#include <algorithm>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

namespace tnv {

/// How many threads work on so many pieces when that many are asked for: none or less stands for
/// one for each core, and there are never more than pieces or than any machine has use for.
std::size_t workersFor(int threads, std::size_t pieces);

/// Whether one of the things that are to be worked on is named twice, so that two pieces of work on
/// it might meet.
template <class Thing>
bool hasRepeats(std::vector<Thing*> things) {
  std::sort(things.begin(), things.end(), std::less<>());
  return std::adjacent_find(things.begin(), things.end()) != things.end();
}

/// Makes the results for 0, 1, 2, ... on threads of its own, a bounded number ahead of whoever
/// takes them in this order. Its end waits for what is being made; nothing else is begun then.
template <class Result>
class OrderedWork {
 public:
  /// Called on any of the threads, also on several at once.
  using Produce = std::function<Result(std::size_t)>;

  OrderedWork(std::size_t pieces, int threads, Produce make)
      : produce(std::move(make)), count(pieces), slots(2 * workersFor(threads, pieces)) {
    startWorkers(slots.size() / 2);
  }

  ~OrderedWork() {
    {
      const std::lock_guard lock(mutex);
      ended = true;
    }
    mayStart.notify_all();
    for (std::thread& worker : workers)
      worker.join();
  }

  OrderedWork(const OrderedWork&) = delete;
  OrderedWork& operator=(const OrderedWork&) = delete;

  /// The next result, or what was thrown instead of it; a `std::logic_error` behind the last one.
  /// At any time two results a thread are there or in the making, among them the one that was taken
  /// last: it counts until the next call.
  Result take() {
    if (taken == count) throw std::logic_error("OrderedWork::take: Nothing is left!");
    if (workers.empty()) return produce(taken++);
    Outcome outcome = await();
    if (outcome.error) std::rethrow_exception(outcome.error);
    return std::move(*outcome.result);
  }

 private:
  struct Outcome {
    std::optional<Result> result;
    std::exception_ptr error;
  };

  void startWorkers(std::size_t number) {
    workers.reserve(number);
    try {
      while (workers.size() < number)
        workers.emplace_back([this] { work(); });
    } catch (const std::exception&) {
      // The system has no more threads to give; those that are there do all, or else who takes.
    }
  }

  void work() {
    std::unique_lock lock(mutex);
    while (true) {
      mayStart.wait(lock, [this] { return isOver() || started < done + slots.size(); });
      if (isOver()) return;
      const std::size_t piece = started++;
      lock.unlock();
      Outcome outcome = attempt(piece);
      lock.lock();
      slots[piece % slots.size()] = std::move(outcome);
      isMade.notify_one();
    }
  }

  bool isOver() const { return ended || started == count; }

  Outcome attempt(std::size_t piece) const {
    try {
      return {produce(piece), nullptr};
    } catch (...) {
      return {std::nullopt, std::current_exception()};
    }
  }

  Outcome await() {
    std::unique_lock lock(mutex);
    done = taken;
    mayStart.notify_all();
    std::optional<Outcome>& slot = slots[taken % slots.size()];
    isMade.wait(lock, [&] { return slot.has_value(); });
    ++taken;
    return *std::exchange(slot, std::nullopt);
  }

  const Produce produce;
  const std::size_t count;
  std::mutex mutex;
  std::condition_variable mayStart;
  std::condition_variable isMade;
  std::vector<std::optional<Outcome>> slots;  ///< a ring of what was made and not taken
  std::size_t started = 0;
  std::size_t taken = 0;
  std::size_t done = 0;  ///< whose results are gone
  bool ended = false;
  std::vector<std::thread> workers;
};

}  // namespace tnv
