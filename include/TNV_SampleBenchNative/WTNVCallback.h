#pragma once

#include <atomic>

/// A place for a front end's function, called when an event arrives. Empty from construction. Safe
/// to set on one thread while another one calls it.
class WTNVCallback {
 public:
  WTNVCallback() = default;
  WTNVCallback(const WTNVCallback&) = delete;
  WTNVCallback& operator=(const WTNVCallback& other) {
    function.store(other.function.load());
    return *this;
  }
  ~WTNVCallback() = default;

  /// Null empties the slot.
  void set(void (*newFunction)()) { function.store(newFunction); }

  /// Calls the function; an empty slot does nothing.
  void call() const {
    if (auto* const present = function.load()) present();
  }

 private:
  std::atomic<void (*)()> function{nullptr};
};
