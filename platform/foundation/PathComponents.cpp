#include "platform/foundation/PathComponents.h"

namespace searchsystem {

std::string_view pathWithoutTrailingSlashes(std::string_view path) noexcept {
  while (!path.empty() && path.back() == '/')
    path.remove_suffix(1);
  return path;
}

std::string_view lastPathComponent(std::string_view path) noexcept {
  const std::string_view trimmed = pathWithoutTrailingSlashes(path);
  if (trimmed.empty())
    return path.substr(0, path.empty() ? 0 : 1);
  return trimmed.substr(trimmed.rfind('/') + 1);
}

std::string_view pathWithoutLastComponent(std::string_view path) noexcept {
  const std::string_view trimmed = pathWithoutTrailingSlashes(path);
  const std::size_t slash = trimmed.rfind('/');
  if (slash == std::string_view::npos)
    return path.substr(0, trimmed.empty() && !path.empty() ? 1 : 0);
  const std::string_view folder = pathWithoutTrailingSlashes(trimmed.substr(0, slash));
  return folder.empty() ? path.substr(0, 1) : folder;
}

} // namespace searchsystem
