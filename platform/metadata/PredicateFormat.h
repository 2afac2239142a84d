#pragma once

#include <optional>
#include <string>
#include <string_view>

/// The comparison that the format of a predicate states (`NSPredicate.h`).
///
/// Ownership: holds its own text. Threads: one at a time.
struct PredicateFormat {
  enum class Attribute { FileName, ContentChangeDate };
  enum class Operator { Like, In, Later, Earlier };

  /// None when the format is not understood. Throws `std::bad_alloc`.
  static std::optional<PredicateFormat> parse(std::string_view format);

  Attribute attribute = Attribute::FileName;
  Operator comparison = Operator::Like;
  bool regardsCase = true;
  /// The value, or none where an argument is to be put.
  std::optional<std::string> text;
};
