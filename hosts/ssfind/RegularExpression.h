#pragma once

#include "hosts/ssfind/TextError.h"

#include <memory>
#include <string>
#include <string_view>
#include <variant>

namespace re2 {
class RE2;
}

namespace searchsystem::ssfind {

/// A regular expression (RE2's syntax), matched in time linear in the text's length. Letters agree
/// with accents composed or not; a byte that is not UTF-8 is one character, which only wildcards
/// match. Copies share the compiled form.
class RegularExpression {
public:
  [[nodiscard]] static std::variant<RegularExpression, TextError> compile(std::string_view text,
                                                                          bool isCaseSensitive);

  /// Whether it occurs in the text, or is all of it.
  [[nodiscard]] bool occursIn(std::string_view text) const;
  [[nodiscard]] bool isAllOf(std::string_view text) const;

private:
  explicit RegularExpression(std::shared_ptr<const re2::RE2> compiled)
      : compiled_(std::move(compiled)) {}

  std::shared_ptr<const re2::RE2> compiled_;
};

} // namespace searchsystem::ssfind
