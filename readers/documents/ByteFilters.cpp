#include "readers/documents/ByteFilters.h"

#include "readers/documents/CharacterClass.h"

namespace searchsystem {

namespace {

constexpr std::size_t outRoom = 32768;

} // namespace

bool ByteFilter::take(std::string_view piece) {
  if (isDone_)
    return false;
  for (const char c : piece) {
    isDone_ = !decode(static_cast<unsigned char>(c), out_);
    if (isDone_)
      end(out_);
    if ((isDone_ || out_.size() >= outRoom) && !flush())
      isDone_ = true;
    if (isDone_)
      return false;
  }
  return true;
}

bool ByteFilter::flush() {
  if (out_.empty())
    return true;
  const bool isWanted = budget_.spend(out_.size()) && next_.take(out_);
  out_.clear();
  return isWanted;
}

void ByteFilter::finish() {
  if (!isDone_) {
    end(out_);
    static_cast<void>(flush());
  }
  isDone_ = true;
  next_.finish();
}

bool ASCIIHexFilter::decode(unsigned char byte, std::string &out) {
  const int digit = CharacterClass::hexDigit(static_cast<char>(byte));
  if (digit < 0)
    return byte != '>';
  if (high_ >= 0)
    out += static_cast<char>(high_ * 16 + digit);
  high_ = high_ >= 0 ? -1 : digit;
  return true;
}

void ASCIIHexFilter::end(std::string &out) {
  if (high_ >= 0)
    out += static_cast<char>(high_ * 16);
  high_ = -1;
}

bool ASCII85Filter::decode(unsigned char byte, std::string &out) {
  if (byte == '~') {
    // Some writers begin with `<~`.
    const bool isBeginning = isAtStart_ && count_ == 1 && group_ == '<' - '!';
    isAtStart_ = false;
    count_ = isBeginning ? 0 : count_;
    group_ = isBeginning ? 0 : group_;
    return isBeginning;
  }
  if (byte == 'z' && count_ == 0) {
    out.append(4, '\0');
    return true;
  }
  if (byte < '!' || byte > 'u')
    return true;
  group_ = group_ * 85 + (byte - '!');
  if (++count_ == 5) {
    for (int shift = 24; shift >= 0; shift -= 8)
      out += static_cast<char>(group_ >> shift);
    group_ = 0;
    count_ = 0;
    isAtStart_ = false;
  }
  return true;
}

void ASCII85Filter::end(std::string &out) {
  if (count_ < 2)
    return;
  for (int i = count_; i < 5; ++i)
    group_ = group_ * 85 + 84;
  for (int i = 0; i < count_ - 1; ++i)
    out += static_cast<char>(group_ >> (24 - 8 * i));
  count_ = 0;
}

bool RunLengthFilter::decode(unsigned char byte, std::string &out) {
  if (literal_ > 0) {
    out += static_cast<char>(byte);
    --literal_;
  } else if (repeat_ > 0) {
    out.append(static_cast<std::size_t>(repeat_), static_cast<char>(byte));
    repeat_ = 0;
  } else if (byte == 128) {
    return false;
  } else if (byte < 128) {
    literal_ = byte + 1;
  } else {
    repeat_ = 257 - byte;
  }
  return true;
}

} // namespace searchsystem
