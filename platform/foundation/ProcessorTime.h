#pragma once

#include <chrono>

/// How many processors the process may use; at least 1.
[[nodiscard]] int processorCount() noexcept;

/// The time that the processors have spent on this process, all its threads together.
[[nodiscard]] std::chrono::nanoseconds processorTime() noexcept;
