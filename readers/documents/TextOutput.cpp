#include "readers/documents/TextOutput.h"

#include "readers/documents/NormalisedText.h"
#include "readers/documents/Utf8.h"

namespace searchsystem {

namespace {

constexpr std::string_view softHyphen = "\u00AD";
constexpr std::string_view hyphen = "\u2010";

std::size_t lastCharacter(std::string_view text) noexcept {
  std::size_t at = text.size() - 1;
  while (at > 0 && (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80)
    --at;
  return at;
}

} // namespace

void TextOutput::addLine(std::string_view line) {
  const bool joins = joinsNext_;
  joinsNext_ = false;
  while (line.starts_with(' '))
    line.remove_prefix(1);
  while (line.ends_with(' '))
    line.remove_suffix(1);
  if (line.empty() || isStopped_)
    return;
  if (text_.size() >= pieceSize)
    handOver();
  if (!isPageEmpty_ && !text_.empty() && text_.back() != hyphenAtLineEnd && text_.back() != ' ') {
    std::size_t last = lastCharacter(text_), first = 0;
    if (!joins || !isWrittenWithoutBlanks(takeUtf8(text_, last)) ||
        !isWrittenWithoutBlanks(takeUtf8(line, first)))
      text_ += ' ';
  }
  isPageEmpty_ = false;
  hasText_ = true;
  lineBegin_ = text_.size();
  while (!line.empty()) {
    std::size_t length = line.find_first_of(" \xC2");
    length = length == std::string_view::npos ? line.size() : length;
    text_ += line.substr(0, length);
    line.remove_prefix(length);
    if (line.empty())
      break;
    if (line.front() == ' ') {
      // Behind a soft hyphen that was dropped there may be one already.
      if (text_.size() > lineBegin_ && text_.back() != ' ')
        text_ += ' ';
      while (line.starts_with(' '))
        line.remove_prefix(1);
    } else if (line.starts_with(softHyphen) && line.size() > softHyphen.size()) {
      line.remove_prefix(softHyphen.size());
    } else {
      text_ += line.front();
      line.remove_prefix(1);
    }
  }
  endLineWithHyphen();
}

void TextOutput::endLineWithHyphen() {
  const std::string_view line = std::string_view(text_).substr(lineBegin_);
  const std::size_t length = line.ends_with('-')          ? 1
                             : line.ends_with(softHyphen) ? softHyphen.size()
                             : line.ends_with(hyphen)     ? hyphen.size()
                                                          : 0;
  if (length == 0)
    return;
  const std::string_view before = line.substr(0, line.size() - length);
  const bool isSoft = line.ends_with(softHyphen);
  if (before.empty() || before.back() == ' ' || before.back() == '-') {
    if (isSoft)
      text_.resize(text_.size() - length);
    return;
  }
  text_.resize(text_.size() - length);
  text_ += hyphenAtLineEnd;
}

void TextOutput::endPage() {
  if (isStopped_)
    return;
  text_ += pageEnd;
  isPageEmpty_ = true;
  joinsNext_ = false;
  if (text_.size() >= pieceSize)
    handOver();
}

/// Keeps the last character: what follows depends on it.
void TextOutput::handOver() {
  if (text_.empty() || isStopped_)
    return;
  const std::size_t kept = lastCharacter(text_);
  handedOver_ += kept;
  if (handedOver_ > mostBytes)
    isStopped_ = isTooLarge_ = true;
  else
    isStopped_ = !sink_.take(std::string_view(text_).substr(0, kept));
  text_.erase(0, kept);
}

void TextOutput::finish() {
  handOver();
  if (!isStopped_ && !text_.empty())
    isStopped_ = !sink_.take(text_);
  text_.clear();
}

} // namespace searchsystem
