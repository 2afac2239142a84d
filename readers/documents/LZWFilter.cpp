#include "readers/documents/LZWFilter.h"

namespace searchsystem {

namespace {

constexpr std::size_t outRoom = 32768;

} // namespace

LZWFilter::LZWFilter(ByteSink &next, InflationBudget &budget, bool changesEarly)
    : next_(next), budget_(budget), early_(changesEarly ? 1 : 0) {
  for (unsigned code = 0; code < firstCode; ++code) {
    prefixes_[code] = 0;
    lengths_[code] = 1;
    bytes_[code] = static_cast<char>(code);
  }
}

bool LZWFilter::take(std::string_view piece) {
  if (isDone_)
    return false;
  for (const char c : piece) {
    bits_ = bits_ << 8 | static_cast<unsigned char>(c);
    bitCount_ += 8;
    if (bitCount_ < width_)
      continue;
    bitCount_ -= width_;
    const unsigned code = bits_ >> bitCount_ & ((1U << width_) - 1);
    if (!takeCode(code) || (out_.size() >= outRoom && !flush())) {
      isDone_ = true;
      static_cast<void>(flush());
      return false;
    }
  }
  return true;
}

bool LZWFilter::takeCode(unsigned code) {
  if (code == endCode)
    return false;
  if (code == clearCode) {
    nextCode_ = firstCode;
    width_ = 9;
    lastCode_ = clearCode;
    return true;
  }
  if (lastCode_ == clearCode) {
    if (code > endCode)
      return false;
    append(code);
    lastCode_ = code;
    return true;
  }
  if (code > nextCode_ || (code == nextCode_ && nextCode_ == codes))
    return false;
  const bool isNew = code == nextCode_;
  const std::size_t begin = append(isNew ? lastCode_ : code);
  const char first = out_[begin];
  if (isNew)
    out_ += first;
  if (nextCode_ < codes) {
    prefixes_[nextCode_] = static_cast<std::uint16_t>(lastCode_);
    lengths_[nextCode_] = static_cast<std::uint16_t>(lengths_[lastCode_] + 1);
    bytes_[nextCode_] = first;
    ++nextCode_;
    if (nextCode_ + early_ >= 1U << width_ && width_ < 12)
      ++width_;
  }
  lastCode_ = code;
  return true;
}

std::size_t LZWFilter::append(unsigned code) {
  const std::size_t begin = out_.size();
  out_.resize(begin + lengths_[code]);
  for (std::size_t i = out_.size(); i > begin; --i) {
    out_[i - 1] = bytes_[code];
    code = prefixes_[code];
  }
  return begin;
}

bool LZWFilter::flush() {
  if (out_.empty())
    return true;
  const bool isWanted = budget_.spend(out_.size()) && next_.take(out_);
  out_.clear();
  return isWanted;
}

void LZWFilter::finish() {
  if (!isDone_)
    static_cast<void>(flush());
  isDone_ = true;
  next_.finish();
}

} // namespace searchsystem
