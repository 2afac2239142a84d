#pragma once

/// How many processors the process may use; at least 1.
[[nodiscard]] int processorCount() noexcept;
