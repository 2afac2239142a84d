#pragma once

#include "hosts/ssfind/RegularExpression.h"

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace searchsystem::ssfind {

/// Files and folders that are left out, as lines of a .gitignore name them: a pattern without a
/// slash is a name at any depth, one with a slash a path from the folder searched, and one that
/// ends with a slash names folders. With a folder goes all that lies below it.
class ExcludedPaths {
public:
  ExcludedPaths() = default;

  /// Adds a pattern of wildcards.
  [[nodiscard]] std::optional<TextError> add(std::string_view pattern, bool isCaseSensitive);

  [[nodiscard]] bool isEmpty() const noexcept { return expressions_.empty(); }

  /// Whether a file is left out; `path` begins below the folder searched.
  [[nodiscard]] bool containFile(std::string_view path) const;
  [[nodiscard]] bool containFolder(std::string_view path) const;

private:
  std::vector<RegularExpression> expressions_;
};

} // namespace searchsystem::ssfind
