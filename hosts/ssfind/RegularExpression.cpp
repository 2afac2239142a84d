#include "hosts/ssfind/RegularExpression.h"

#include "hosts/ssfind/Utf8.h"
#include "hosts/ssfind/VisibleText.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <re2/re2.h>
#include <utf8proc.h>

namespace searchsystem::ssfind {

namespace {

bool isASCII(std::string_view text) noexcept {
  return std::none_of(text.begin(), text.end(), [](char c) { return (c & 0x80) != 0; });
}

std::string withReplacements(std::string_view text) {
  std::string valid;
  while (!text.empty()) {
    const Utf8Character character = firstCharacter(text);
    if (character.isValid)
      valid.append(text, 0, character.length);
    else
      valid += "\uFFFD";
    text.remove_prefix(character.length);
  }
  return valid;
}

/// In the form in which texts are compared. UTF-8.
std::string composed(std::string_view text) {
  if (isASCII(text))
    return std::string(text);
  const std::string valid = withReplacements(text);
  utf8proc_uint8_t *bytes = nullptr;
  const utf8proc_ssize_t size =
      utf8proc_map(reinterpret_cast<const utf8proc_uint8_t *>(valid.data()),
                   static_cast<utf8proc_ssize_t>(valid.size()), &bytes,
                   static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_COMPOSE));
  const std::unique_ptr<utf8proc_uint8_t, decltype(&std::free)> owned(bytes, &std::free);
  if (size < 0)
    throw std::bad_alloc();
  return {reinterpret_cast<const char *>(bytes), static_cast<std::size_t>(size)};
}

re2::RE2::Options optionsFor(bool isCaseSensitive) {
  re2::RE2::Options options;
  options.set_case_sensitive(isCaseSensitive);
  options.set_log_errors(false);
  // A name may hold a line end like any other character.
  options.set_dot_nl(true);
  return options;
}

} // namespace

std::variant<RegularExpression, TextError> RegularExpression::compile(std::string_view text,
                                                                      bool isCaseSensitive) {
  auto compiled = std::make_shared<const re2::RE2>(composed(text), optionsFor(isCaseSensitive));
  if (compiled->ok())
    return RegularExpression(std::move(compiled));
  const std::size_t column = text.find(compiled->error_arg());
  return TextError{visible(compiled->error()), column != text.npos ? column : 0};
}

bool RegularExpression::occursIn(std::string_view text) const {
  return re2::RE2::PartialMatch(composed(text), *compiled_);
}

bool RegularExpression::isAllOf(std::string_view text) const {
  return re2::RE2::FullMatch(composed(text), *compiled_);
}

} // namespace searchsystem::ssfind
