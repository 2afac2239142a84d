#pragma once

#include <atomic>
#include <climits>

namespace searchsystem {

/// Lets one of many calls fail, or that one and all after it.
class Shortage {
public:
  /// Counts from now on; the call of that number fails, the first being 1.
  void begin(int number, bool lasts) noexcept {
    hasFailed_ = false;
    lasts_ = lasts;
    left_ = number;
    isOn_ = true;
  }

  /// No call fails any more; whether one has.
  bool end() noexcept {
    isOn_ = false;
    return hasFailed_;
  }

  /// Whether the call that asks fails. Any thread.
  bool fails() noexcept {
    if (!isOn_)
      return false;
    const int number = --left_;
    if (number != 0 && !(lasts_ && number < 0))
      return false;
    return hasFailed_ = true;
  }

private:
  std::atomic<bool> isOn_{false};
  std::atomic<int> left_{INT_MAX};
  std::atomic<bool> lasts_{false};
  std::atomic<bool> hasFailed_{false};
};

} // namespace searchsystem
