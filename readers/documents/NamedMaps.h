#pragma once

#include "readers/documents/CharacterMap.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace searchsystem {

/// The character maps that a document uses by name, each of which is parsed once: a large one takes
/// milliseconds, and each font of a document may name the same. Not thread-safe.
class NamedMaps {
public:
  /// `files` have to outlive it.
  explicit NamedMaps(const CharacterMaps &files) noexcept : files_(files) {}

  /// `Identity-H`, `Identity-V` or one of the files; null if there is none of that name, or it is
  /// just being parsed: it builds on itself.
  [[nodiscard]] std::shared_ptr<const CharacterMap> find(std::string_view name);

private:
  const CharacterMaps &files_;
  std::map<std::string, std::shared_ptr<const CharacterMap>, std::less<>> maps_;
};

} // namespace searchsystem
