#pragma once

#include "readers/documents/TextSink.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace searchsystem {

/// Puts the lines of a document together to one text, in the form in which it is compared, and
/// hands it over in pieces: one blank for any white space and for each line end, a mark for a
/// hyphen that ends a line, another behind each page.
class TextOutput {
public:
  static constexpr std::size_t mostBytes = std::size_t{32} << 20;
  static constexpr std::size_t pieceSize = std::size_t{64} << 10;
  /// A hyphen or nothing: it ended a line. The line end behind it is dropped.
  static constexpr char hyphenAtLineEnd = '\x01';
  static constexpr char pageEnd = '\x0C';

  explicit TextOutput(TextSink &sink) : sink_(sink) {}

  /// Puts a line behind the others. It is normalised but for the blanks and the soft hyphens in it.
  void addLine(std::string_view line);
  /// The next line continues where the last one was broken for want of room: no blank stands
  /// between them if their scripts are written without.
  void joinNext() noexcept { joinsNext_ = true; }
  void endPage();
  /// Hands over what is left.
  void finish();

  /// Something else than blanks was added.
  [[nodiscard]] bool hasText() const noexcept { return hasText_; }
  [[nodiscard]] bool isTooLarge() const noexcept { return isTooLarge_; }
  /// No more is taken: it is too large, or the sink wants no more.
  [[nodiscard]] bool isStopped() const noexcept { return isStopped_; }

private:
  void endLineWithHyphen();
  void handOver();

  TextSink &sink_;
  std::string text_;
  std::size_t handedOver_ = 0;
  /// Where the present line begins in `text_`.
  std::size_t lineBegin_ = 0;
  bool isPageEmpty_ = true;
  bool joinsNext_ = false;
  bool hasText_ = false;
  bool isTooLarge_ = false;
  bool isStopped_ = false;
};

} // namespace searchsystem
