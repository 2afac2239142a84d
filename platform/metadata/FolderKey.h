#pragma once

#include "platform/foundation/PathComponents.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace searchsystem {

/// A folder's path as the index stores it: as bytes, with a NUL before each component instead of
/// the slash. In the order of their keys a folder comes directly before everything below it, and
/// the sub-folders of one folder are in the order of their names. The root's key is empty.
namespace FolderKey {

/// `path` is absolute, without empty components. Throws `std::bad_alloc`.
[[nodiscard]] inline std::string ofPath(std::string_view path) {
  std::string key(pathWithoutTrailingSlashes(path));
  std::replace(key.begin(), key.end(), '/', '\0');
  return key;
}

/// The path, without a slash at its end: empty for the root.
inline void appendPath(std::string &path, std::string_view key) {
  const auto begin = static_cast<std::ptrdiff_t>(path.size());
  path.append(key);
  std::replace(path.begin() + begin, path.end(), '\0', '/');
}

/// The end of the range that holds the keys of a folder and of everything below it.
[[nodiscard]] inline std::string endOfTree(std::string_view key) {
  return std::string(key).append(1, '\1');
}

/// Whether one of the components is hidden.
[[nodiscard]] inline bool isHidden(std::string_view key) noexcept {
  return key.find(std::string_view("\0.", 2)) != std::string_view::npos;
}

[[nodiscard]] inline bool isBelow(std::string_view key, std::string_view folder) noexcept {
  return key.size() > folder.size() && key.starts_with(folder) && key[folder.size()] == '\0';
}

[[nodiscard]] inline bool isInTree(std::string_view key, std::string_view folder) noexcept {
  return key == folder || isBelow(key, folder);
}

} // namespace FolderKey

} // namespace searchsystem
