#include "platform/foundation/MountPoints.h"

#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/NSLock.h"
#include "platform/foundation/NeverDestroyed.h"
#include "platform/foundation/PathComponents.h"
#include "platform/foundation/SystemCalls.h"

#include <algorithm>
#include <chrono>
#include <fcntl.h>
#include <optional>

namespace searchsystem {

namespace {

using Clock = std::chrono::steady_clock;

/// A search may miss a mount made while it runs: it might have read the folder just before.
constexpr std::chrono::milliseconds validity{10};

constexpr int mountPointField = 4;

/// None on failure. Throws `std::bad_alloc`.
std::optional<std::string> readTable() {
  const FileDescriptor file(
      uninterrupted(&SystemCalls::openMountTable, O_RDONLY | O_CLOEXEC | O_NOCTTY));
  if (!file)
    return std::nullopt;
  std::string table;
  std::size_t filled = 0;
  ssize_t size = 0;
  do {
    filled += static_cast<std::size_t>(size);
    table.resize(filled + (std::size_t{16} << 10));
    size = uninterrupted(&SystemCalls::read, file.number(), table.data() + filled,
                         table.size() - filled);
  } while (size > 0);
  if (size < 0)
    return std::nullopt;
  table.resize(filled);
  return table;
}

bool isOctal(char digit) noexcept { return digit >= '0' && digit <= '7'; }

/// The table writes blanks, line ends and backslashes as a backslash and three octal digits.
std::string unescaped(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    std::size_t length = 1;
    char c = text.front();
    if (c == '\\' && text.size() >= 4 && std::all_of(&text[1], &text[1] + 3, isOctal)) {
      c = static_cast<char>((text[1] - '0') * 64 + (text[2] - '0') * 8 + (text[3] - '0'));
      length = 4;
    }
    result += c;
    text.remove_prefix(length);
  }
  return result;
}

std::string_view field(std::string_view line, int number) noexcept {
  for (; number > 0; --number)
    line.remove_prefix(std::min(line.find(' '), line.size() - 1) + 1);
  return line.substr(0, line.find(' '));
}

struct Latest {
  NSLock lock;
  Clock::time_point readAt PF_GUARDED_BY(lock);
  std::shared_ptr<const MountPoints> mounts PF_GUARDED_BY(lock);
};

Latest &sharedLatest() noexcept {
  static NeverDestroyed<Latest> latest;
  return latest.get();
}

} // namespace

MountPoints::MountPoints(std::string_view table) {
  while (!table.empty()) {
    const std::string_view line = table.substr(0, table.find('\n'));
    table.remove_prefix(std::min(line.size() + 1, table.size()));
    if (!line.empty())
      names_.push_back(unescaped(lastPathComponent(field(line, mountPointField))));
  }
  std::ranges::sort(names_);
}

bool MountPoints::haveName(std::string_view name) const noexcept {
  return std::ranges::binary_search(names_, name);
}

std::shared_ptr<const MountPoints> MountPoints::recent() noexcept {
  Latest &latest = sharedLatest();
  const LockGuard guard(latest.lock);
  const Clock::time_point now = Clock::now();
  if (latest.readAt == Clock::time_point() || now - latest.readAt >= validity) {
    latest.readAt = now;
    latest.mounts = nullptr;
    try {
      if (const std::optional<std::string> table = readTable())
        latest.mounts = std::make_shared<const MountPoints>(*table);
    } catch (...) {
      // Memory is short: callers read the status of every folder instead.
    }
  }
  return latest.mounts;
}

void MountPoints::forget() noexcept {
  Latest &latest = sharedLatest();
  const LockGuard guard(latest.lock);
  latest.readAt = {};
}

} // namespace searchsystem
