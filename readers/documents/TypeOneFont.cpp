#include "readers/documents/TypeOneFont.h"

#include "readers/documents/CharacterClass.h"

#include <algorithm>
#include <charconv>
#include <cstddef>

namespace searchsystem {

namespace {

/// The next word of a program, cut off from it: a slash begins a word, blanks end one.
std::string_view takeWord(std::string_view &program) noexcept {
  std::size_t begin = 0;
  while (begin < program.size() && CharacterClass::isBlank(program[begin]))
    ++begin;
  std::size_t end = std::min(begin + 1, program.size());
  while (end < program.size() && CharacterClass::isRegular(program[end]))
    ++end;
  const std::string_view word = program.substr(begin, end - begin);
  program.remove_prefix(end);
  return word;
}

/// A decimal number, or one with its base before it (8#101). -1 if it is none.
int numberOf(std::string_view word) noexcept {
  int base = 10, number = -1;
  if (const std::size_t sign = word.find('#'); sign != std::string_view::npos) {
    std::from_chars(word.data(), word.data() + sign, base);
    word.remove_prefix(sign + 1);
    if (base < 2 || base > 36)
      return -1;
  }
  std::from_chars(word.data(), word.data() + word.size(), number, base);
  return number;
}

} // namespace

std::map<unsigned char, std::string_view> typeOneEncoding(std::string_view program) {
  std::map<unsigned char, std::string_view> names;
  const std::size_t begin = program.find("/Encoding");
  if (begin == std::string_view::npos)
    return names;
  program.remove_prefix(begin + 9);
  // dup 65 /A put, one for each code, and def at the end.
  while (!program.empty()) {
    const std::string_view word = takeWord(program);
    if (word == "def" || word == "readonly" || word == "StandardEncoding")
      break;
    if (word != "dup")
      continue;
    const int code = numberOf(takeWord(program));
    const std::string_view name = takeWord(program);
    if (code >= 0 && code < 256 && name.starts_with('/'))
      names.insert_or_assign(static_cast<unsigned char>(code), name.substr(1));
  }
  return names;
}

} // namespace searchsystem
