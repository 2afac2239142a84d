#include "hosts/ssfind/SizeRange.h"

#include <limits>
#include <optional>
#include <utility>

namespace searchsystem::ssfind {

namespace {

constexpr std::uint64_t unlimited = std::numeric_limits<std::uint64_t>::max();

bool isDigit(char c) { return c >= '0' && c <= '9'; }
char lowerCase(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

class Parser {
public:
  explicit Parser(std::string_view text) : text_(text) {}

  [[nodiscard]] bool isAtEnd() const { return position_ == text_.size(); }
  [[nodiscard]] std::size_t position() const { return position_; }
  [[nodiscard]] TextError error() && { return std::move(error_); }

  bool take(std::string_view token) {
    const bool isNext = text_.substr(position_).starts_with(token);
    position_ += isNext ? token.size() : 0;
    return isNext;
  }

  std::optional<std::uint64_t> size() {
    const std::size_t column = position_;
    const std::string_view digits = takeDigits();
    if (digits.empty())
      return fail(column, "expected a number of bytes, as in 200k or 1.5M");
    const bool hasFraction =
        position_ + 1 < text_.size() && text_[position_] == '.' && isDigit(text_[position_ + 1]);
    position_ += hasFraction ? 1 : 0;
    const std::string_view fraction = hasFraction ? takeDigits() : std::string_view();
    return product(digits, fraction, unit(), column);
  }

private:
  std::nullopt_t fail(std::size_t column, std::string message) {
    error_ = {std::move(message), column};
    return std::nullopt;
  }

  std::string_view takeDigits() {
    const std::size_t first = position_;
    while (!isAtEnd() && isDigit(text_[position_]))
      ++position_;
    return text_.substr(first, position_ - first);
  }

  bool takeLetter(char letter) {
    const bool isNext = !isAtEnd() && lowerCase(text_[position_]) == letter;
    position_ += isNext ? 1 : 0;
    return isNext;
  }

  std::uint64_t unit() {
    std::uint64_t unit = 1;
    constexpr std::string_view letters = "kmgt";
    const std::size_t power = isAtEnd() ? letters.npos : letters.find(lowerCase(text_[position_]));
    if (power != letters.npos) {
      ++position_;
      const std::uint64_t base = takeLetter('i') ? 1024 : 1000;
      for (std::size_t i = 0; i <= power; ++i)
        unit *= base;
    }
    takeLetter('b');
    return unit;
  }

  std::optional<std::uint64_t> product(std::string_view digits, std::string_view fraction,
                                       std::uint64_t unit, std::size_t column) {
    std::uint64_t size = 0;
    for (const char digit : digits) {
      const auto value = static_cast<unsigned>(digit - '0');
      if (size > (unlimited - value) / 10)
        return fail(column, "there are no files of this size");
      size = size * 10 + value;
    }
    if (size > unlimited / unit / 2)
      return fail(column, "there are no files of this size");
    size *= unit;
    for (const char digit : fraction) {
      // The rest of a fraction that is no whole number of bytes is dropped.
      size += static_cast<unsigned>(digit - '0') * unit / 10;
      unit /= 10;
    }
    return size;
  }

  std::string_view text_;
  std::size_t position_ = 0;
  TextError error_{};
};

} // namespace

std::variant<SizeRange, TextError> parseSizeRange(std::string_view text) {
  Parser parser(text);
  SizeRange range{0, unlimited};
  const bool isFrom = parser.take("+");
  bool isTo = !isFrom && (parser.take("..") || parser.take("-"));
  if (!isTo) {
    const auto from = parser.size();
    if (!from)
      return std::move(parser).error();
    range.least = *from;
    const bool isRange = !isFrom && parser.take("..");
    if (!isFrom && !isRange)
      range.most = *from;
    isTo = isRange && !parser.isAtEnd();
  }
  const std::size_t endColumn = parser.position();
  if (isTo) {
    const auto to = parser.size();
    if (!to)
      return std::move(parser).error();
    range.most = *to;
  }
  if (!parser.isAtEnd())
    return TextError{"unexpected text; a size is written as 200k, 1.5M or 2Gi", parser.position()};
  if (range.most < range.least)
    return TextError{"the range ends before it starts", endColumn};
  return range;
}

} // namespace searchsystem::ssfind
