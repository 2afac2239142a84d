#include "hosts/ssfind/NamePattern.h"

#include "hosts/ssfind/GlobPattern.h"

#include <utility>

namespace searchsystem::ssfind {

namespace {

CFObject<CFStringRef> stringOf(const std::string &bytes) {
  return own(CFStringCreateWithFileSystemRepresentation(nullptr, bytes.c_str()));
}

} // namespace

std::variant<NamePattern, TextError> NamePattern::parse(const std::string &text, NameSyntax syntax,
                                                        bool isCaseSensitive) {
  if (syntax == NameSyntax::Text)
    return NamePattern(Text{std::shared_ptr<const void>(stringOf(text).release(),
                                                        [](const void *string) {
                                                          CFRelease(static_cast<CFTypeRef>(string));
                                                        }),
                            text.empty(), isCaseSensitive});
  std::string expression = text;
  if (syntax == NameSyntax::Glob) {
    auto translated = expressionOfGlob(text);
    if (auto *error = std::get_if<TextError>(&translated))
      return std::move(*error);
    expression = std::get<std::string>(std::move(translated));
  }
  auto compiled = RegularExpression::compile(expression, isCaseSensitive);
  if (auto *error = std::get_if<TextError>(&compiled))
    return std::move(*error);
  return NamePattern(
      Expression{std::get<RegularExpression>(std::move(compiled)), syntax == NameSyntax::Glob});
}

bool NamePattern::matches(std::string_view name) const {
  if (const auto *expression = std::get_if<Expression>(&condition_))
    return expression->isWholeName ? expression->expression.isAllOf(name)
                                   : expression->expression.occursIn(name);
  const Text &text = std::get<Text>(condition_);
  const CFObject<CFStringRef> string = stringOf(std::string(name));
  return text.isEmpty ||
         CFStringFind(string.get(), static_cast<CFStringRef>(text.string.get()),
                      text.isCaseSensitive ? 0 : kCFCompareCaseInsensitive | kCFCompareNonliteral)
                 .location != kCFNotFound;
}

} // namespace searchsystem::ssfind
