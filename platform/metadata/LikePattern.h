#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// A pattern that a whole name has to match: `*` stands for any text, also none, `?` for one
/// character, and a backslash takes away the meaning of what follows. Canonically equivalent names
/// are equal, and nothing ends inside a composed character.
///
/// Ownership: keeps nothing of the text that it was made from. Threads: any; `matches` changes
/// nothing.
class LikePattern {
public:
  /// Without `regardsCase`, case is folded as a search in text folds it. Throws `std::bad_alloc`.
  LikePattern(std::string_view pattern, bool regardsCase);

  /// Throws `std::bad_alloc` when `name` is not ASCII, or the pattern is more than `*` and the end
  /// of a name; else nothing.
  [[nodiscard]] bool matches(std::string_view name) const;

private:
  [[nodiscard]] bool isSuffix(std::string_view end) const noexcept;
  [[nodiscard]] bool matchesFolded(std::string_view name) const;

  const bool regardsCase_;
  /// Code points as the search folds them, or one of the wildcards.
  std::vector<std::int32_t> units_;
  /// What follows a `*` that begins the pattern, if that is all and is ASCII.
  std::string suffix_;
  /// For each byte of it, the bit that is set in lower case and not in upper case.
  std::vector<unsigned char> caseBits_;
};
