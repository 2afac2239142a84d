#include "hosts/ssfind/ExcludedPaths.h"

#include "hosts/ssfind/GlobPattern.h"

#include <algorithm>

namespace searchsystem::ssfind {

std::optional<TextError> ExcludedPaths::add(std::string_view pattern, bool isCaseSensitive) {
  std::string_view path = pattern;
  const bool isFolder = path.ends_with('/');
  path.remove_suffix(isFolder ? 1 : 0);
  const bool isFromFolder = path.find('/') != path.npos;
  const std::size_t skipped = path.starts_with('/') ? 1 : 0;
  path.remove_prefix(skipped);
  if (path.empty())
    return TextError{"this would leave out nothing", 0};
  auto translated = expressionOfGlob(path);
  if (const auto *error = std::get_if<TextError>(&translated))
    return TextError{error->message, error->column + skipped};
  auto compiled = RegularExpression::compile((isFromFolder ? "(?:" : "(?:.*/)?(?:") +
                                                 std::get<std::string>(translated) +
                                                 (isFolder ? ")/.*" : ")(?:/.*)?"),
                                             isCaseSensitive);
  if (auto *error = std::get_if<TextError>(&compiled))
    return TextError{std::move(error->message), 0};
  expressions_.push_back(std::get<RegularExpression>(std::move(compiled)));
  return std::nullopt;
}

bool ExcludedPaths::containFile(std::string_view path) const {
  return std::any_of(expressions_.begin(), expressions_.end(),
                     [&](const RegularExpression &each) { return each.isAllOf(path); });
}

bool ExcludedPaths::containFolder(std::string_view path) const {
  return containFile(std::string(path) + '/');
}

} // namespace searchsystem::ssfind
