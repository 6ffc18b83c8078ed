#include "boundary/TNVNotificator.h"

#include <algorithm>

TNVObserverList& TNVObserverList::instance() {
  static TNVObserverList list;
  return list;
}

void TNVObserverList::add(TNVObserver* observer) {
  const std::lock_guard lock(mutex);
  if (std::find(observers.begin(), observers.end(), observer) == observers.end()) {
    observers.push_back(observer);
  }
}

void TNVObserverList::remove(TNVObserver* observer) {
  std::unique_lock lock(mutex);
  const auto place = std::find(observers.begin(), observers.end(), observer);
  if (place != observers.end()) observers.erase(place);
  idle.wait(lock, [&] { return !busyElsewhere(observer); });
}

std::vector<TNVObserver*> TNVObserverList::snapshot() {
  const std::lock_guard lock(mutex);
  return observers;
}

bool TNVObserverList::enter(TNVObserver* observer) {
  const std::lock_guard lock(mutex);
  if (std::find(observers.begin(), observers.end(), observer) == observers.end()) return false;
  running.emplace(observer, std::this_thread::get_id());
  return true;
}

void TNVObserverList::leave(TNVObserver* observer) {
  const std::lock_guard lock(mutex);
  const auto [first, last] = running.equal_range(observer);
  const auto own = std::find_if(
      first, last, [](const auto& entry) { return entry.second == std::this_thread::get_id(); });
  running.erase(own);
  idle.notify_all();
}

bool TNVObserverList::busyElsewhere(TNVObserver* observer) const {
  const auto [first, last] = running.equal_range(observer);
  return std::any_of(first, last,
                     [](const auto& entry) { return entry.second != std::this_thread::get_id(); });
}
