#pragma once

#include <algorithm>
#include <cstring>
#include <string_view>

namespace searchsystem {

/// Paths of folders as the index orders them: absolute, without a slash at the end, the root's
/// empty. A slash comes before all other bytes, so that a folder comes directly before everything
/// below it, and the sub-folders of one folder are in the order of their names.
namespace FolderPath {

/// Below 0, 0 or above 0: `a` comes before `b`, is the same, or comes after.
[[nodiscard]] inline int compare(std::string_view a, std::string_view b) noexcept {
  const std::size_t common = std::min(a.size(), b.size());
  const auto [inA, inB] = std::mismatch(a.begin(), a.begin() + common, b.begin());
  if (inA == a.begin() + common)
    return a.size() < b.size() ? -1 : a.size() > b.size() ? 1 : 0;
  if (*inA == '/' || *inB == '/')
    return *inA == '/' ? -1 : 1;
  return static_cast<unsigned char>(*inA) < static_cast<unsigned char>(*inB) ? -1 : 1;
}

[[nodiscard]] inline bool isBelow(std::string_view path, std::string_view folder) noexcept {
  return path.size() > folder.size() && path[folder.size()] == '/' && path.starts_with(folder);
}

[[nodiscard]] inline bool isInTree(std::string_view path, std::string_view folder) noexcept {
  return path == folder || isBelow(path, folder);
}

/// Whether one of the components of `path`, which is empty or begins with a slash, is hidden.
[[nodiscard]] inline bool isHidden(std::string_view path) noexcept {
  return path.find("/.") != std::string_view::npos;
}

} // namespace FolderPath

} // namespace searchsystem
