#include "hosts/ssfind/GlobPattern.h"

#include <optional>
#include <utility>

namespace searchsystem::ssfind {

namespace {

class Translator {
public:
  explicit Translator(std::string_view pattern) : pattern_(pattern) {}

  bool translate();
  [[nodiscard]] std::string expression() && { return std::move(expression_); }
  [[nodiscard]] TextError error() && { return std::move(error_); }

private:
  bool take(char c) {
    const bool isNext = position_ < pattern_.size() && pattern_[position_] == c;
    position_ += isNext ? 1 : 0;
    return isNext;
  }
  bool fail(std::size_t column, std::string message) {
    error_ = {std::move(message), column};
    return false;
  }
  /// A character that stands for itself, in a set or outside.
  void addLiteral(char c) {
    const bool isSyntax = static_cast<unsigned char>(c) < 0x80 &&
                          std::string_view("\\^$.|?*+()[]{}-&~").find(c) != std::string_view::npos;
    if (isSyntax)
      expression_ += '\\';
    expression_ += c;
  }
  void addStars();
  bool addSet();
  bool addAlternatives();
  bool addEscaped(std::size_t column) {
    if (position_ == pattern_.size())
      return fail(column, "nothing follows the backslash");
    addLiteral(pattern_[position_++]);
    return true;
  }

  std::string_view pattern_;
  std::size_t position_ = 0;
  std::string expression_;
  /// Where the braces begin that are open.
  std::optional<std::size_t> braces_;
  TextError error_{};
};

bool Translator::translate() {
  while (position_ < pattern_.size()) {
    const std::size_t column = position_;
    const char c = pattern_[position_++];
    bool isRight = true;
    switch (c) {
    case '*':
      addStars();
      break;
    case '?':
      expression_ += "[^/]";
      break;
    case '[':
      isRight = addSet();
      break;
    case '{':
      isRight = !braces_ || fail(column, "braces inside braces");
      braces_ = column;
      expression_ += "(?:";
      break;
    case '}':
      if (braces_)
        expression_ += ')';
      else
        addLiteral(c);
      braces_.reset();
      break;
    case ',':
      expression_ += braces_ ? '|' : ',';
      break;
    case '\\':
      isRight = addEscaped(column);
      break;
    default:
      addLiteral(c);
    }
    if (!isRight)
      return false;
  }
  return !braces_ || fail(*braces_, "these braces are not closed");
}

void Translator::addStars() {
  const std::size_t first = position_ - 1;
  while (take('*')) {
  }
  const bool isAlone = position_ - first == 2 && (first == 0 || pattern_[first - 1] == '/');
  if (isAlone && position_ == pattern_.size())
    expression_ += ".*";
  else if (isAlone && take('/'))
    expression_ += "(?:.*/)?";
  else
    expression_ += "[^/]*";
}

bool Translator::addSet() {
  const std::size_t column = position_ - 1;
  expression_ += '[';
  if (take('!') || take('^'))
    // A name's part ends at a slash, whatever the set says.
    expression_ += "^/";
  for (bool isFirst = true; isFirst || !take(']'); isFirst = false) {
    if (position_ == pattern_.size())
      return fail(column, "this bracket is not closed");
    const std::size_t place = position_;
    const char c = pattern_[position_++];
    const bool isRange =
        c == '-' && !isFirst && position_ < pattern_.size() && pattern_[position_] != ']';
    if (isRange)
      expression_ += '-';
    else if (c == '\\') {
      if (!addEscaped(place))
        return false;
    } else {
      addLiteral(c);
    }
  }
  expression_ += ']';
  return true;
}

} // namespace

std::variant<std::string, TextError> expressionOfGlob(std::string_view pattern) {
  Translator translator(pattern);
  if (!translator.translate())
    return std::move(translator).error();
  return std::move(translator).expression();
}

} // namespace searchsystem::ssfind
