#pragma once

#include "readers/ReaderProtocol.h"

#include <linux/filter.h>
#include <optional>
#include <utility>
#include <vector>

namespace searchsystem {

#if defined(__has_feature)
#define SEARCHSYSTEM_HAS_FEATURE(name) __has_feature(name)
#else
#define SEARCHSYSTEM_HAS_FEATURE(name) 0
#endif

/// A sanitizer takes terabytes of address space, and some calls, for itself.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) ||                               \
    SEARCHSYSTEM_HAS_FEATURE(address_sanitizer) || SEARCHSYSTEM_HAS_FEATURE(thread_sanitizer)
constexpr bool isSanitized = true;
#else
constexpr bool isSanitized = false;
#endif

/// The only descriptors that a worker holds, besides those that its program keeps open for all. One
/// for photographs begins with the first alone, and gets others over it.
constexpr int answerDescriptor = 3;
constexpr int documentDescriptor = 4;

/// What a worker gives up before it sees the first byte of a file: from then on it can read what it
/// was lent, use memory up to a limit, send to its socket, and end; one for photographs can also
/// receive over its socket, and close. Any other call to the system kills it.
///
/// Made once, before the workers are, so that each pays for no more than handing it to the kernel.
class Seal {
public:
  /// None when this kernel has no such thing.
  [[nodiscard]] static std::optional<Seal> prepare(ReaderTask task);

  /// Seals the process. After false it must exit.
  [[nodiscard]] bool apply(const ReaderLimits &limits) const noexcept;

private:
  Seal(ReaderTask task, std::vector<sock_filter> filter) noexcept
      : task_(task), filter_(std::move(filter)) {}

  ReaderTask task_;
  /// For the kernel's machine of seccomp(2).
  std::vector<sock_filter> filter_;
};

} // namespace searchsystem
