#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace searchsystem {

/// The comparison that the format of a predicate states (`NSPredicate.h`).
///
/// Ownership: holds its own text. Threads: one at a time.
struct PredicateFormat {
  /// The first two compare the file's name, the others its date.
  enum class Operator { Like, In, Later, Earlier };

  /// None when the format is not understood. Throws `std::bad_alloc`.
  static std::optional<PredicateFormat> parse(std::string_view format);

  [[nodiscard]] bool isOnDate() const noexcept {
    return comparison == Operator::Later || comparison == Operator::Earlier;
  }

  Operator comparison = Operator::Like;
  bool regardsCase = true;
  /// The value; none where the format has `%@`.
  std::optional<std::string> text{};
};

} // namespace searchsystem
