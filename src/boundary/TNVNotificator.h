#pragma once

#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

#include "TNV_SampleBenchNative/TNVObserver.h"

/// The observers of the process, in the order of registration.
class TNVObserverList {
 public:
  static TNVObserverList& instance();

  /// An observer that is registered already keeps its place.
  void add(TNVObserver* observer);

  /// When it returns, no other thread is inside an event of the observer any more.
  void remove(TNVObserver* observer);

  std::vector<TNVObserver*> snapshot();

  /// Calls the event unless the observer has left the list since the snapshot was taken. The lock
  /// is not held during the call.
  template <class Event>
  void deliver(TNVObserver* observer, const Event& event) {
    if (!enter(observer)) return;
    const Leave leave{*this, observer};
    event();
  }

 private:
  struct Leave {
    TNVObserverList& list;
    TNVObserver* observer;
    ~Leave() { list.leave(observer); }
  };

  bool enter(TNVObserver* observer);
  void leave(TNVObserver* observer);
  bool busyElsewhere(TNVObserver* observer) const;

  std::mutex mutex;
  std::condition_variable idle;
  std::vector<TNVObserver*> observers;
  std::multimap<TNVObserver*, std::thread::id> running;
};

/// Base part of every handler: how it reports to the observers.
class TNVNotificator {
 public:
  TNVNotificator(const TNVNotificator&) = delete;
  TNVNotificator& operator=(const TNVNotificator&) = delete;

  void addObserver(TNVObserver* observer) { observers->add(observer); }
  void removeObserver(TNVObserver* observer) { observers->remove(observer); }

  /// Calls the event on every observer of that interface; on none while `enabled` is off.
  template <class Observer>
  void notify(void (Observer::*event)()) const {
    if (!enabled) return;
    for (TNVObserver* candidate : observers->snapshot()) {
      observers->deliver(candidate, [&] {
        if (auto* receiver = dynamic_cast<Observer*>(candidate)) (receiver->*event)();
      });
    }
  }

  bool enabled = true;
  TNVObserverList* observers = &TNVObserverList::instance();

 protected:
  TNVNotificator() = default;
  ~TNVNotificator() = default;
};
