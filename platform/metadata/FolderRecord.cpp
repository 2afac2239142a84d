#include "platform/metadata/FolderRecord.h"

#include "platform/metadata/CheckSum.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

namespace searchsystem {

namespace {

/// Changes whenever the format of a record does.
constexpr std::uint64_t formatVersion = 1;

std::atomic<std::uint64_t> rightsOfProcess{0};

struct Header {
  std::uint64_t sum;
  std::int64_t seconds;
  std::uint32_t nanoseconds;
  std::uint32_t folderBytes;
  std::uint32_t linkBytes;
  std::uint32_t mayHoldContents;
};

std::uint64_t sumOf(const FolderIdentity &folder, std::string_view record) noexcept {
  std::uint64_t seed = mix(formatVersion, rightsOfProcess.load(std::memory_order_relaxed));
  seed = mix(mix(seed, static_cast<std::uint64_t>(folder.volume)), folder.inode);
  return checkSum(seed, record.substr(sizeof(Header::sum)));
}

bool areWhole(std::string_view names) noexcept { return names.empty() || names.back() == '\0'; }

/// Nonzero if the process may read and enter folders regardless of their permissions.
std::uint64_t powersOverFiles() noexcept {
  __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
  std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> data{};
  if (syscall(SYS_capget, &header, data.data()) != 0)
    return 0;
  constexpr std::uint32_t powers = 1U << CAP_DAC_OVERRIDE | 1U << CAP_DAC_READ_SEARCH;
  return data[0].effective & powers;
}

} // namespace

std::string FolderRecord::pack(const FolderIdentity &folder, FileMoment changeTime,
                               const FolderNames &names) {
  Header header{0,
                changeTime.seconds,
                changeTime.nanoseconds,
                static_cast<std::uint32_t>(names.folders.size()),
                static_cast<std::uint32_t>(names.links.size()),
                names.mayHoldContents ? 1U : 0U};
  std::string record;
  record.reserve(sizeof header + names.folders.size() + names.links.size() + names.files.size());
  record.resize(sizeof header);
  record.append(names.folders).append(names.links).append(names.files);
  std::memcpy(record.data(), &header, sizeof header);
  header.sum = sumOf(folder, record);
  std::memcpy(record.data(), &header.sum, sizeof header.sum);
  return record;
}

std::optional<FolderNames> FolderRecord::unpack(const FolderIdentity &folder, FileMoment changeTime,
                                                std::string_view record) noexcept {
  Header header{};
  if (record.size() < sizeof header)
    return std::nullopt;
  std::memcpy(&header, record.data(), sizeof header);
  if (FileMoment{header.seconds, header.nanoseconds} != changeTime ||
      header.sum != sumOf(folder, record))
    return std::nullopt;
  std::string_view rest = record.substr(sizeof header);
  const auto take = [&](std::size_t size) {
    const std::string_view names = rest.substr(0, size);
    rest.remove_prefix(names.size());
    return names;
  };
  FolderNames names;
  names.folders = take(header.folderBytes);
  names.links = take(header.linkBytes);
  names.files = rest;
  names.mayHoldContents = header.mayHoldContents != 0;
  if (!areWhole(names.folders) || !areWhole(names.links) || !areWhole(names.files))
    return std::nullopt;
  return names;
}

void learnRightsOfProcess() {
  std::uint64_t rights = mix(mix(geteuid(), getegid()), powersOverFiles());
  const int count = std::max(getgroups(0, nullptr), 0);
  std::vector<gid_t> groups(static_cast<std::size_t>(count));
  groups.resize(static_cast<std::size_t>(std::max(getgroups(count, groups.data()), 0)));
  std::sort(groups.begin(), groups.end());
  for (const gid_t group : groups)
    rights = mix(rights, group);
  rightsOfProcess.store(rights, std::memory_order_relaxed);
}

} // namespace searchsystem
