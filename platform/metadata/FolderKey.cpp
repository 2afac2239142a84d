#include "platform/metadata/FolderKey.h"

#include "platform/foundation/PathComponents.h"

#include <algorithm>

std::string FolderKey::ofPath(std::string_view path) {
  std::string key(pathWithoutTrailingSlashes(path));
  std::replace(key.begin(), key.end(), '/', '\0');
  return key;
}

void FolderKey::appendPath(std::string &path, std::string_view key) {
  const auto begin = static_cast<std::ptrdiff_t>(path.size());
  path.append(key);
  std::replace(path.begin() + begin, path.end(), '\0', '/');
}
