#pragma once

#include "hosts/ssfind/CFObject.h"
#include "hosts/ssfind/RegularExpression.h"
#include "hosts/ssfind/TextError.h"

#include <memory>
#include <string>
#include <string_view>
#include <variant>

namespace searchsystem::ssfind {

/// How a condition on a name is written.
enum class NameSyntax {
  /// It occurs in the name.
  Text,
  /// With wildcards; it is the whole name.
  Glob,
  /// It occurs in the name.
  Regex
};

/// A condition on a file's name that is tested here, in addition to the one that a search of the
/// library can have. A text is compared as the library does it.
class NamePattern {
public:
  [[nodiscard]] static std::variant<NamePattern, TextError>
  parse(const std::string &text, NameSyntax syntax, bool isCaseSensitive);

  /// `name` is that of the file, without its folder.
  [[nodiscard]] bool matches(std::string_view name) const;

private:
  struct Text {
    /// Shared, since patterns are copied with the options.
    std::shared_ptr<const void> string;
    bool isEmpty;
    bool isCaseSensitive;
  };
  struct Expression {
    RegularExpression expression;
    bool isWholeName;
  };

  explicit NamePattern(std::variant<Text, Expression> condition)
      : condition_(std::move(condition)) {}

  std::variant<Text, Expression> condition_;
};

} // namespace searchsystem::ssfind
