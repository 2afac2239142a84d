#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace searchsystem {

/// A pattern for whole names: `*` matches any text, also none, `?` matches one character, and a
/// backslash escapes the character after it. Canonically equivalent names are equal, and no match
/// ends inside a composed character.
///
/// Ownership: borrows nothing. Threads: any; immutable.
class LikePattern {
public:
  /// Without `regardsCase` it folds case, as `TextPattern` does. Throws `std::bad_alloc`.
  LikePattern(std::string_view pattern, bool regardsCase);

  /// Can throw `std::bad_alloc` only when `name` is not ASCII, or the pattern is not a `*` followed
  /// by ASCII characters.
  [[nodiscard]] bool matches(std::string_view name) const;

private:
  [[nodiscard]] bool matchesFolded(std::string_view name) const;

  const bool regardsCase_;
  /// Folded code points, or wildcards.
  std::vector<std::int32_t> units_;
  /// What follows a `*` at the beginning, if it is the only wildcard and the rest is ASCII.
  std::string suffix_;
};

} // namespace searchsystem
