#include "pdf_reader/CPDFContents.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace searchsystem {

int CPDFContents::takeTokens(CParamArray &tokens, char &goOn) {
  using Effect = ContentState::Effect;
  const unsigned long count = tokens.GetCount();
  Effect effect = Effect::none;
  // The token at which the parse stops unless an operator follows.
  unsigned long stop = count;
  unsigned long i = 0;
  for (; i < count && effect != Effect::stop && effect != Effect::fail; ++i) {
    effect = state_.take(tokens.token(i));
    if (effect == Effect::show)
      addString(state_.shown());
    stop = state_.place() != ContentState::Place::stopped ? count : std::min(stop, i);
  }
  if (effect == Effect::fail) {
    // Leaves the operand, too.
    tokens.dropFront(i - 2);
    return 0;
  }
  tokens.dropFront(stop);
  if (state_.endGroup() == Effect::stop) {
    state_ = ContentState(ContentState::Place::stream);
    goOn = 0;
  }
  return 1;
}

/// Appends the bytes of a hexadecimal string up to the first NUL.
void CPDFContents::addString(std::string_view token) {
  const std::string_view digits = digitsOfHexString(token);
  const std::size_t before = text_.size();
  text_.resize(before + digits.size() / 2 + 1);
  const std::size_t size = decodeHexDigits(digits, &text_[before], text_.size() - before);
  text_.resize(before + sizeBeforeNUL(&text_[before], size));
}

int CPDFContents::ReleaseParse() {
  state_ = ContentState();
  text_.clear();
  return CPDFSection::ReleaseParse();
}

int CPDFContents::GetTextLength() const noexcept {
  constexpr std::size_t most = std::numeric_limits<int>::max();
  return text_.empty() ? 0 : static_cast<int>(std::min(text_.size() + 1, most));
}

int CPDFContents::GetTextString(unsigned char *buf, unsigned long *ioSize) const noexcept {
  if (buf == nullptr || ioSize == nullptr)
    return 0;
  const unsigned long size = std::min<unsigned long>(text_.size(), *ioSize);
  std::memcpy(buf, text_.data(), size);
  std::memset(buf + size, 0, *ioSize - size);
  *ioSize = size;
  return 1;
}

} // namespace searchsystem
