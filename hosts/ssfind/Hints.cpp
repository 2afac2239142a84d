#include "hosts/ssfind/Hints.h"

#include "hosts/ssfind/VisibleText.h"

#include <algorithm>
#include <iterator>

namespace searchsystem::ssfind {

namespace {

/// As a shell takes it for one argument.
std::string quoted(std::string_view text) {
  const auto isPlain = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           std::string_view("-_.,+@%").find(c) != std::string_view::npos || (c & 0x80) != 0;
  };
  std::string shown = visible(text);
  if (std::all_of(shown.begin(), shown.end(), isPlain))
    return shown;
  return shown.find('\'') == shown.npos ? '\'' + shown + '\'' : '"' + shown + '"';
}

} // namespace

std::string hintForMissingFolder(std::string_view typed, const Options &options) {
  const bool hasName = options.conditions.name || !options.furtherNames.empty();
  if (hasName || typed.empty() || typed.find('/') != typed.npos)
    return {};
  const bool isPattern = typed.find_first_of("*?") != typed.npos;
  return " (to search for a name: ssfind " + std::string(isPattern ? "-g " : "") + "-n " +
         quoted(typed) + ')';
}

std::string_view longOptionForWord(std::string_view word) noexcept {
  constexpr struct {
    std::string_view word, option;
  } words[] = {{"iname", "name"},     {"iregex", "regex"},     {"maxdepth", "max-depth"},
               {"mtime", "modified"}, {"newermt", "modified"}, {"print0", "print0"},
               {"fprint0", "print0"}};
  const auto *const found = std::find_if(std::begin(words), std::end(words),
                                         [&](const auto &row) { return row.word == word; });
  return found != std::end(words) ? found->option : std::string_view();
}

std::string hintForWildcards(bool isInName, bool isInKeyword) {
  if (isInName)
    return "a * in --name stands for itself; with --glob it is any text";
  return isInKeyword ? "a * in --keyword stands for itself" : "";
}

} // namespace searchsystem::ssfind
