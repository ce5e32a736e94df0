// Sets a variable to a given value at the end of a scope, however the scope is left.
#pragma once

#include <utility>

namespace Kelda {

template <class T>
class Restore {
  public:
    Restore(T& variable, T value) : variable_(variable), value_(std::move(value)) {}
    ~Restore() { variable_ = std::move(value_); }
    Restore(Restore const&) = delete;
    Restore& operator=(Restore const&) = delete;

  private:
    T& variable_;
    T value_;
};

} // namespace Kelda
