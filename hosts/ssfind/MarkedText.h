#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace searchsystem::ssfind {

/// A line that the user typed, and below it marks that point at places in it.
class MarkedText {
public:
  /// Marks the character at that byte, or the end.
  [[nodiscard]] static MarkedText withMarkAt(std::string_view text, std::size_t column);

  void add(std::string_view piece);
  /// An empty piece is a place where something is missing.
  void addMarked(std::string_view piece);

  /// Both lines, indented.
  [[nodiscard]] std::string text() const { return "  " + line_ + "\n  " + marks_ + '\n'; }

private:
  std::string line_;
  std::string marks_;
  std::size_t width_ = 0;
};

} // namespace searchsystem::ssfind
