#pragma once

#include <string>
#include <string_view>

/// How a folder's path stands in the index: as bytes, with a NUL before each component in place of
/// the slash. In the order of their keys a folder comes right before all that is below it, and the
/// sub-folders of one folder in the order of their names. The root's key is empty.
namespace FolderKey {

/// `path` is absolute, without a slash at its end and without empty components. Throws
/// `std::bad_alloc`.
[[nodiscard]] std::string ofPath(std::string_view path);

/// The path, without a slash at its end: empty for the root.
void appendPath(std::string &path, std::string_view key);

/// What follows the keys of a folder and of all that is below it.
[[nodiscard]] inline std::string endOfTree(std::string_view key) {
  return std::string(key).append(1, '\1');
}

/// Whether one of the components is a hidden one.
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
