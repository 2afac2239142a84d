#include "hosts/ssfind/MarkedText.h"

#include "hosts/ssfind/Utf8.h"
#include "hosts/ssfind/VisibleText.h"

#include <algorithm>

namespace searchsystem::ssfind {

namespace {

/// The number of characters in a valid text.
std::size_t widthOf(std::string_view text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
  }));
}

} // namespace

MarkedText MarkedText::withMarkAt(std::string_view text, std::size_t column) {
  const std::string_view rest = text.substr(column);
  const std::size_t length = rest.empty() ? 0 : firstCharacter(rest).length;
  MarkedText marked;
  marked.add(text.substr(0, column));
  marked.addMarked(rest.substr(0, length));
  marked.add(rest.substr(length));
  return marked;
}

void MarkedText::add(std::string_view piece) {
  const std::string shown = visible(piece);
  line_ += shown;
  width_ += widthOf(shown);
}

void MarkedText::addMarked(std::string_view piece) {
  marks_.resize(width_, ' ');
  add(piece);
  marks_.resize(std::max(width_, marks_.size() + 1), '^');
}

} // namespace searchsystem::ssfind
