#include "platform/metadata/SearchScope.h"

#include "platform/foundation/FileStatus.h"
#include "platform/foundation/ResolvedPath.h"

namespace {

std::string resolvedFolder(const std::string &path) {
  const std::optional<FileStatus> status = fileStatus(currentFolder, path.c_str(), FollowLink::Yes);
  if (!status || status->kind != FileKind::Folder)
    return {};
  return resolvedPath(path).value_or(std::string());
}

} // namespace

std::string resolvedSearchScope(const std::string &scope) {
  std::string folder = resolvedFolder(scope);
  if (!folder.empty())
    return folder;
  constexpr const char *blanks = " \t";
  const std::size_t begin = scope.find_first_not_of(blanks);
  if (begin == std::string::npos)
    return {};
  const std::size_t end = scope.find_last_not_of(blanks) + 1;
  if (end - begin == scope.size())
    return {};
  return resolvedFolder(scope.substr(begin, end - begin));
}
