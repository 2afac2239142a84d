#include "platform/metadata/ProcessRights.h"

#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/SystemCalls.h"
#include "platform/metadata/CheckSum.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <fcntl.h>
#include <linux/capability.h>
#include <optional>
#include <string_view>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

namespace searchsystem {

namespace {

std::atomic<std::uint64_t> rights{0};

std::optional<std::uint32_t> powersOverFiles() noexcept {
  __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
  std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> data{};
  if (syscall(SYS_capget, &header, data.data()) != 0)
    return std::nullopt;
  constexpr std::uint32_t powers = 1U << CAP_DAC_OVERRIDE | 1U << CAP_DAC_READ_SEARCH;
  return data[0].effective & powers;
}

/// A table of user_namespaces(7) in one number.
std::optional<std::uint64_t> mapping(const char *path) noexcept {
  const FileDescriptor file(
      uninterrupted(&SystemCalls::openAt, AT_FDCWD, path, O_RDONLY | O_CLOEXEC | O_NOCTTY));
  if (!file)
    return std::nullopt;
  // A table has 340 lines of 33 bytes at most.
  std::array<char, 16384> table{};
  const std::size_t size = readFully(file.number(), table.data(), table.size());
  if (size == 0)
    return std::nullopt;
  return checkSum({table.data(), size});
}

std::uint64_t read() {
  const std::optional<std::uint32_t> powers = powersOverFiles();
  const std::optional<std::uint64_t> users = mapping("/proc/self/uid_map");
  const std::optional<std::uint64_t> groups = mapping("/proc/self/gid_map");
  const int count = getgroups(0, nullptr);
  if (!powers || !users || !groups || count < 0)
    return 0;
  std::vector<gid_t> others(static_cast<std::size_t>(count));
  if (getgroups(count, others.data()) != count)
    return 0;
  std::ranges::sort(others);
  std::uint64_t number = mix(mix(geteuid(), getegid()), mix(*powers, mix(*users, *groups)));
  for (const gid_t group : others)
    number = mix(number, group);
  return std::max<std::uint64_t>(number, 1);
}

} // namespace

void ProcessRights::learn() noexcept {
  std::uint64_t number = 0;
  try {
    number = read();
  } catch (...) {
    // Memory is short: no record counts.
  }
  rights.store(number, std::memory_order_relaxed);
}

std::uint64_t ProcessRights::number() noexcept { return rights.load(std::memory_order_relaxed); }

} // namespace searchsystem
