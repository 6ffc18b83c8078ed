#pragma once

#include <exception>

namespace tnv {

/// Runs a number of steps that must not keep each other from being done, and passes on what the
/// first failing one threw when all are through.
class FirstError {
 public:
  template <class Step>
  void attempt(const Step& step) {
    try {
      step();
    } catch (...) {
      if (!error) error = std::current_exception();
    }
  }

  void rethrow() const {
    if (error) std::rethrow_exception(error);
  }

 private:
  std::exception_ptr error;
};

}  // namespace tnv
