#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace searchsystem {

/// Puts a text that arrives in pieces, as `ReaderProtocol.h` describes it, into the form in which a
/// keyword is compared with it: without what counts for nothing at the ends of lines and pages and,
/// unless told to be distinct, with its case folded.
///
/// Time is linear in the text, however it is divided. Not thread-safe.
class TextFolding {
public:
  /// `keepsHyphens` leaves `lineEndHyphen` where a hyphen ends a line; otherwise nothing is left.
  TextFolding(bool isDistinct, bool keepsHyphens) noexcept
      : isDistinct_(isDistinct), keepsHyphens_(keepsHyphens) {}

  /// Appends the next piece to `text`. Throws `std::bad_alloc`.
  void append(std::string_view piece, std::string &text);

  /// Forgets the text, for another.
  void restart() noexcept;

  /// Takes the next character off `text`; -1 for what is not UTF-8.
  static std::int32_t takeCodePoint(std::string_view &text) noexcept;
  static void appendCodePoint(std::string &text, std::int32_t codePoint);
  /// Appends a character of a normalised text with its case folded.
  static void appendFoldedCodePoint(std::string &text, std::int32_t codePoint);

private:
  void appendLines(std::string_view piece, std::string &text);
  void appendPlain(std::string_view piece, std::string &text);

  const bool isDistinct_;
  const bool keepsHyphens_;
  /// The beginning of a character whose rest is in the next piece.
  std::string cutCharacter_;
  /// Behind the hyphen of a line's end, or a page's end.
  bool dropsBlanks_ = false;
  bool isAfterBlank_ = false;
};

} // namespace searchsystem
