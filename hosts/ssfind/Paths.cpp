#include "hosts/ssfind/Paths.h"

#include <algorithm>

namespace searchsystem::ssfind {

bool isBelow(std::string_view path, std::string_view folder) noexcept {
  if (folder == "/")
    return path.size() > 1;
  return path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '/';
}

std::string_view pathBelow(std::string_view path, std::string_view folder) noexcept {
  path.remove_prefix(folder.size());
  return path.starts_with('/') ? path.substr(1) : path;
}

std::string_view parentOf(std::string_view path) noexcept {
  const std::size_t slash = path.rfind('/');
  return path.substr(0, slash == 0 ? 1 : slash);
}

std::string joined(std::string_view folder, std::string_view below) {
  std::string path(folder);
  if (!path.ends_with('/'))
    path += '/';
  return path.append(below);
}

bool isBeforeInTree(std::string_view a, std::string_view b) noexcept {
  const auto rank = [](char c) { return c == '/' ? -1 : static_cast<unsigned char>(c); };
  return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                      [&](char x, char y) { return rank(x) < rank(y); });
}

} // namespace searchsystem::ssfind
