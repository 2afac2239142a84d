#include "pdf_reader/CPDFContents.h"

#include "pdf_reader/ContentState.h"
#include "pdf_reader/HexString.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace searchsystem {

int CPDFContents::ParseLine(CParamArray *tokens, char *goOn, void * /*context*/) {
  if (tokens == nullptr || goOn == nullptr)
    return 0;
  bool isStopped = false;
  bool hasFailed = false;
  tokens->dropFront(parseTokens(*tokens, isStopped, hasFailed));
  if (isStopped)
    *goOn = 0;
  return hasFailed ? 0 : 1;
}

/// Gives how many tokens are done with: all, but for a stop or a failure.
unsigned long CPDFContents::parseTokens(const CParamArray &tokens, bool &isStopped,
                                        bool &hasFailed) {
  const unsigned long count = tokens.GetCount();
  // The next operator is looked for once, not from each token that waits for it.
  unsigned long found = 0;
  unsigned long i = 0;
  while (i < count) {
    const std::string_view token = tokens.token(i);
    if (!isInside_) {
      isInside_ = token == "obj";
    } else if (!isInStream_) {
      isInside_ = token != "endobj";
      isInStream_ = token == "stream";
    } else if (!isInText_) {
      if (token == "endstream") {
        isInStream_ = false;
      } else if (token == "BT") {
        isInText_ = true;
      } else {
        isStopped = true;
        return i;
      }
    } else if (token == "ET") {
      isInText_ = false;
    } else {
      const unsigned long used = parseText(tokens, i, found, hasFailed);
      if (hasFailed)
        return i;
      i += used;
      continue;
    }
    ++i;
  }
  return count;
}

/// One step inside a text object. Gives how many tokens it takes.
unsigned long CPDFContents::parseText(const CParamArray &tokens, unsigned long index,
                                      unsigned long &found, bool &hasFailed) {
  for (found = std::max(found, index); found < tokens.GetCount(); ++found)
    if (isTextOperator(tokens.token(found)))
      break;
  if (found == tokens.GetCount() || found == index)
    return 1;
  if (found == index + 1 && tokens.token(found) == "Tj")
    hasFailed = !addString(tokens.token(index));
  return found - index + 1;
}

/// Appends the bytes of a hexadecimal string up to the first NUL; false for any other token.
bool CPDFContents::addString(std::string_view token) {
  if (!isHexString(token))
    return false;
  const std::string_view digits = digitsOfHexString(token);
  const std::size_t most = digits.size() / 2 + 1;
  if (!texts_.makeRoom(1, most + 1))
    return false;
  char *const text = texts_.textRoom();
  std::size_t size = decodeHexDigits(digits, text, most);
  if (const void *const end = std::memchr(text, 0, size); end != nullptr)
    size = static_cast<std::size_t>(static_cast<const char *>(end) - text);
  texts_.takeTextRoom(size);
  textLength_ += size;
  return true;
}

int CPDFContents::Release() {
  CPDFSection::Release();
  texts_.Release();
  return 1;
}

int CPDFContents::ReleaseParse() {
  CPDFSection::ReleaseParse();
  isInStream_ = isInText_ = false;
  texts_.Reset();
  textLength_ = 0;
  return 1;
}

int CPDFContents::GetTextLength() const noexcept {
  constexpr std::size_t most = std::numeric_limits<int>::max();
  return textLength_ == 0 ? 0 : static_cast<int>(std::min(textLength_ + 1, most));
}

int CPDFContents::GetTextString(unsigned char *buf, unsigned long *ioSize) const noexcept {
  if (buf == nullptr || ioSize == nullptr)
    return 0;
  unsigned long size = 0;
  for (unsigned long i = 0; i < texts_.GetCount() && size < *ioSize; ++i) {
    const std::string_view text = texts_.token(i);
    const unsigned long length = std::min(text.size(), *ioSize - size);
    std::memcpy(buf + size, text.data(), length);
    size += length;
  }
  std::memset(buf + size, 0, *ioSize - size);
  *ioSize = size;
  return 1;
}

} // namespace searchsystem
