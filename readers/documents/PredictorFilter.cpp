#include "readers/documents/PredictorFilter.h"

#include <algorithm>
#include <cstdlib>

namespace searchsystem {

namespace {

constexpr std::int64_t firstPNG = 10;
constexpr std::size_t outRoom = 32768;

using Byte = unsigned char;

// PNG (ISO/IEC 15948), 9.4.
int paeth(int left, int above, int corner) noexcept {
  const int toLeft = std::abs(above - corner);
  const int toAbove = std::abs(left - corner);
  const int toCorner = std::abs(left + above - 2 * corner);
  return toLeft <= toAbove && toLeft <= toCorner ? left : toAbove <= toCorner ? above : corner;
}

} // namespace

bool PredictorFilter::isFor(const FilterStep &step) noexcept {
  constexpr std::int64_t mostColumns = std::int64_t{1} << 24;
  constexpr std::int64_t mostColors = 32;
  const std::int64_t bits = step.bitsPerComponent;
  return (step.predictor == 2 || step.predictor >= firstPNG) && step.columns > 0 &&
         step.columns <= mostColumns && step.colors > 0 && step.colors <= mostColors &&
         (bits == 1 || bits == 2 || bits == 4 || bits == 8 || bits == 16);
}

PredictorFilter::PredictorFilter(ByteSink &next, const FilterStep &step)
    : next_(next), isPNG_(step.predictor >= firstPNG),
      colors_(static_cast<std::size_t>(step.colors)),
      bits_(static_cast<std::size_t>(step.bitsPerComponent)),
      pixelSize_(std::max<std::size_t>(1, colors_ * bits_ / 8)),
      rowSize_((colors_ * bits_ * static_cast<std::size_t>(step.columns) + 7) / 8 +
               (isPNG_ ? 1 : 0)) {}

bool PredictorFilter::take(std::string_view piece) {
  while (!piece.empty()) {
    const std::string_view part = piece.substr(0, rowSize_ - row_.size());
    row_ += part;
    piece.remove_prefix(part.size());
    if (row_.size() == rowSize_ && !flush())
      return false;
  }
  return true;
}

bool PredictorFilter::flush() {
  if (isPNG_)
    undoPNG();
  else
    undoTIFF();
  out_.append(row_, isPNG_ ? 1 : 0);
  previous_.swap(row_);
  row_.clear();
  if (out_.size() < outRoom)
    return true;
  const bool isWanted = next_.take(out_);
  out_.clear();
  return isWanted;
}

void PredictorFilter::finish() {
  if (!row_.empty())
    static_cast<void>(flush());
  if (!out_.empty())
    static_cast<void>(next_.take(out_));
  out_.clear();
  next_.finish();
}

void PredictorFilter::undoPNG() {
  // The first row stands below zeros.
  if (previous_.size() < row_.size())
    previous_.resize(row_.size());
  auto *const row = reinterpret_cast<Byte *>(row_.data());
  const auto *const above = reinterpret_cast<const Byte *>(previous_.data());
  const std::size_t size = row_.size();
  const std::size_t leftless = std::min(size, pixelSize_ + 1);
  switch (row_.front()) {
  case 1:
    for (std::size_t i = leftless; i < size; ++i)
      row[i] = static_cast<Byte>(row[i] + row[i - pixelSize_]);
    break;
  case 2:
    for (std::size_t i = 1; i < size; ++i)
      row[i] = static_cast<Byte>(row[i] + above[i]);
    break;
  case 3:
    for (std::size_t i = 1; i < leftless; ++i)
      row[i] = static_cast<Byte>(row[i] + above[i] / 2);
    for (std::size_t i = leftless; i < size; ++i)
      row[i] = static_cast<Byte>(row[i] + (row[i - pixelSize_] + above[i]) / 2);
    break;
  case 4:
    for (std::size_t i = 1; i < leftless; ++i)
      row[i] = static_cast<Byte>(row[i] + above[i]);
    for (std::size_t i = leftless; i < size; ++i)
      row[i] =
          static_cast<Byte>(row[i] + paeth(row[i - pixelSize_], above[i], above[i - pixelSize_]));
    break;
  default:
    break;
  }
}

// TIFF 6.0, section 14, for components of any width.
void PredictorFilter::undoTIFF() {
  auto *const row = reinterpret_cast<Byte *>(row_.data());
  const std::size_t size = row_.size();
  if (bits_ == 8) {
    for (std::size_t i = colors_; i < size; ++i)
      row[i] = static_cast<Byte>(row[i] + row[i - colors_]);
    return;
  }
  if (bits_ == 16) {
    for (std::size_t i = 2 * colors_; i + 1 < size; i += 2) {
      const std::size_t left = i - 2 * colors_;
      const unsigned sum = (row[i] * 256U + row[i + 1]) + (row[left] * 256U + row[left + 1]);
      row[i] = static_cast<Byte>(sum >> 8);
      row[i + 1] = static_cast<Byte>(sum);
    }
    return;
  }
  const unsigned mask = (1U << bits_) - 1;
  const std::size_t perByte = 8 / bits_;
  const auto shiftOf = [&](std::size_t i) { return 8 - bits_ * (i % perByte + 1); };
  for (std::size_t i = colors_; i < size * perByte; ++i) {
    const std::size_t left = i - colors_;
    const unsigned sum = (row[left / perByte] >> shiftOf(left)) + (row[i / perByte] >> shiftOf(i));
    row[i / perByte] = static_cast<Byte>((row[i / perByte] & ~(mask << shiftOf(i))) |
                                         ((sum & mask) << shiftOf(i)));
  }
}

} // namespace searchsystem
