#include "platform/metadata/PredicateFormat.h"

#include "platform/foundation/PathComponents.h"

#include <algorithm>

namespace {

bool isBlank(char c) noexcept { return c == ' ' || (c >= '\t' && c <= '\r'); }

bool isWordCharacter(char c) noexcept {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

/// The part of a format that has not been read yet.
class Rest {
public:
  explicit Rest(std::string_view format) noexcept : rest_(format) {}

  [[nodiscard]] bool isEmpty() const noexcept { return rest_.empty(); }

  void skipBlanks() noexcept {
    while (!rest_.empty() && isBlank(rest_.front()))
      rest_.remove_prefix(1);
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

  /// A text in quotes, in which a backslash stands before a character that is meant as it is.
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

bool readAttribute(Rest &rest, PredicateFormat &format) noexcept {
  const std::string_view name = rest.takeWord();
  if (name == "kMDItemFSName")
    format.attribute = PredicateFormat::Attribute::FileName;
  else if (name == "kMDItemFSContentChangeDate")
    format.attribute = PredicateFormat::Attribute::ContentChangeDate;
  else
    return false;
  return true;
}

bool readOperator(Rest &rest, PredicateFormat &format) noexcept {
  if (format.attribute == PredicateFormat::Attribute::ContentChangeDate) {
    const bool isLater = rest.take(">");
    format.comparison =
        isLater ? PredicateFormat::Operator::Later : PredicateFormat::Operator::Earlier;
    return isLater || rest.take("<");
  }
  const std::string_view word = rest.takeWord();
  const bool isIn = equalIgnoringASCIICase(word, "in");
  if (!isIn && !equalIgnoringASCIICase(word, "like"))
    return false;
  format.comparison = isIn ? PredicateFormat::Operator::In : PredicateFormat::Operator::Like;
  format.regardsCase = !rest.take("[c]");
  return true;
}

} // namespace

std::optional<PredicateFormat> PredicateFormat::parse(std::string_view format) {
  PredicateFormat parsed;
  Rest rest(format);
  rest.skipBlanks();
  if (!readAttribute(rest, parsed))
    return std::nullopt;
  rest.skipBlanks();
  if (!readOperator(rest, parsed))
    return std::nullopt;
  rest.skipBlanks();
  if (!rest.take("%@") && !(parsed.text = rest.takeQuotedText()))
    return std::nullopt;
  rest.skipBlanks();
  const bool lacksArgument = parsed.attribute == Attribute::ContentChangeDate && parsed.text;
  if (!rest.isEmpty() || lacksArgument)
    return std::nullopt;
  return parsed;
}
