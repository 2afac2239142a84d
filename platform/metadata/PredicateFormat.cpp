#include "platform/metadata/PredicateFormat.h"

#include "platform/foundation/PathComponents.h"

#include <algorithm>

namespace searchsystem {

namespace {

bool isWordCharacter(char c) noexcept {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

/// The rest of a format.
class Rest {
public:
  explicit Rest(std::string_view format) noexcept : rest_(format) {}

  [[nodiscard]] bool isEmpty() const noexcept { return rest_.empty(); }

  void skipBlanks() noexcept {
    rest_.remove_prefix(std::min(rest_.find_first_not_of(" \t\n\v\f\r"), rest_.size()));
  }

  bool take(std::string_view text) noexcept {
    if (!rest_.starts_with(text))
      return false;
    rest_.remove_prefix(text.size());
    return true;
  }

  std::string_view takeWord() noexcept {
    const auto end = std::find_if_not(rest_.begin(), rest_.end(), isWordCharacter);
    const std::string_view word(rest_.begin(), end);
    rest_.remove_prefix(word.size());
    return word;
  }

  /// A text in quotes; a backslash escapes the character after it.
  std::optional<std::string> takeQuotedText() {
    if (rest_.empty() || (rest_.front() != '\'' && rest_.front() != '"'))
      return std::nullopt;
    const char quote = rest_.front();
    std::string text;
    for (std::size_t i = 1; i < rest_.size(); ++i) {
      if (rest_[i] == quote) {
        rest_.remove_prefix(i + 1);
        return text;
      }
      if (rest_[i] == '\\' && ++i == rest_.size())
        break;
      text.push_back(rest_[i]);
    }
    return std::nullopt;
  }

private:
  std::string_view rest_;
};

/// Takes the attribute and the operator.
std::optional<PredicateFormat> takeComparison(Rest &rest) {
  using Operator = PredicateFormat::Operator;
  const std::string_view attribute = rest.takeWord();
  rest.skipBlanks();
  if (attribute == "kMDItemFSContentChangeDate") {
    if (rest.take(">"))
      return PredicateFormat{.comparison = Operator::Later};
    if (rest.take("<"))
      return PredicateFormat{.comparison = Operator::Earlier};
  } else if (attribute == "kMDItemFSName") {
    const std::string_view word = rest.takeWord();
    const bool regardsCase = !rest.take("[c]");
    if (equalIgnoringASCIICase(word, "like"))
      return PredicateFormat{Operator::Like, regardsCase};
    if (equalIgnoringASCIICase(word, "in"))
      return PredicateFormat{Operator::In, regardsCase};
  }
  return std::nullopt;
}

} // namespace

std::optional<PredicateFormat> PredicateFormat::parse(std::string_view format) {
  Rest rest(format);
  rest.skipBlanks();
  std::optional<PredicateFormat> parsed = takeComparison(rest);
  rest.skipBlanks();
  if (!parsed || (!rest.take("%@") && !(parsed->text = rest.takeQuotedText())))
    return std::nullopt;
  rest.skipBlanks();
  const bool lacksArgument = parsed->isOnDate() && parsed->text;
  return rest.isEmpty() && !lacksArgument ? parsed : std::nullopt;
}

} // namespace searchsystem
