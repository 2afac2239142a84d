#include "streams/CTransPixelStream.h"

#include <cstdint>
#include <cstring>
#include <new>
#include <utility>

namespace searchsystem {

namespace {

constexpr bool isKnown(PixelFormat format) noexcept { return format <= pixelBGR16; }

constexpr bool isDeep(PixelFormat format) noexcept { return format >= pixelGrey16; }

constexpr PixelFormat asShallow(PixelFormat format) noexcept {
  return isDeep(format) ? static_cast<PixelFormat>(format - pixelGrey16) : format;
}

constexpr long samplesOf(PixelFormat format) noexcept {
  return asShallow(format) == pixelGrey8 ? 1 : 3;
}

constexpr long bytesOf(PixelFormat format) noexcept {
  return samplesOf(format) * (isDeep(format) ? 2 : 1);
}

// Samples may stand at any address.
template <class Sample> std::uint32_t sampleAt(const unsigned char *row, std::size_t index) {
  Sample sample;
  std::memcpy(&sample, row + index * sizeof(Sample), sizeof(Sample));
  return sample;
}

template <class Sample> void setSample(unsigned char *row, std::size_t index, std::uint32_t value) {
  const auto sample = static_cast<Sample>(value);
  std::memcpy(row + index * sizeof(Sample), &sample, sizeof(Sample));
}

/// Changes which samples a pixel has, and their order, but not their depth. Both formats are those
/// of 8 bits.
template <class Sample>
void changeSamples(const unsigned char *row, PixelFormat from, unsigned char *newRow,
                   PixelFormat to, std::size_t width) {
  if (from == to) {
    std::memcpy(newRow, row, width * static_cast<std::size_t>(samplesOf(from)) * sizeof(Sample));
    return;
  }
  if (from == pixelGrey8) {
    for (std::size_t i = 0; i < width * 3; ++i)
      setSample<Sample>(newRow, i, sampleAt<Sample>(row, i / 3));
    return;
  }
  const std::size_t red = from == pixelRGB8 ? 0 : 2;
  for (std::size_t pixel = 0; pixel < width; ++pixel) {
    const std::uint32_t r = sampleAt<Sample>(row, pixel * 3 + red);
    const std::uint32_t g = sampleAt<Sample>(row, pixel * 3 + 1);
    const std::uint32_t b = sampleAt<Sample>(row, pixel * 3 + 2 - red);
    if (to == pixelGrey8) {
      setSample<Sample>(newRow, pixel, (77 * r + 150 * g + 29 * b + 128) / 256);
    } else {
      setSample<Sample>(newRow, pixel * 3 + 2 - red, r);
      setSample<Sample>(newRow, pixel * 3 + 1, g);
      setSample<Sample>(newRow, pixel * 3 + red, b);
    }
  }
}

void deepen(const unsigned char *row, unsigned char *newRow, std::size_t samples) {
  for (std::size_t i = 0; i < samples; ++i)
    setSample<std::uint16_t>(newRow, i, row[i] * 257U);
}

void flatten(const unsigned char *row, unsigned char *newRow, std::size_t samples) {
  for (std::size_t i = 0; i < samples; ++i)
    newRow[i] = static_cast<unsigned char>((sampleAt<std::uint16_t>(row, i) + 128) / 257);
}

} // namespace

int CTransPixelStream::CreateTransPixelStream(CIOStream *target, long width, PixelFormat fromFormat,
                                              PixelFormat toFormat) {
  Release();
  if (target == nullptr || width <= 0 || !std::in_range<std::int32_t>(width) ||
      !isKnown(fromFormat) || !isKnown(toFormat) ||
      !std::in_range<std::int32_t>(width * bytesOf(fromFormat)) ||
      !std::in_range<std::int32_t>(width * bytesOf(toFormat)))
    return 0;
  width_ = static_cast<std::size_t>(width);
  from_ = fromFormat;
  to_ = toFormat;
  if (isDeep(from_) != isDeep(to_)) {
    const std::size_t samples = width_ * static_cast<std::size_t>(samplesOf(to_));
    between_.reset(new (std::nothrow) unsigned char[samples * (isDeep(from_) ? 2 : 1)]);
    if (between_ == nullptr)
      return 0;
  }
  return startRows(target, width * bytesOf(from_), width * bytesOf(to_)) ? 1 : 0;
}

int CTransPixelStream::takeRow(const unsigned char *row) {
  unsigned char *const changed = between_ != nullptr ? between_.get() : newRow();
  if (isDeep(from_))
    changeSamples<std::uint16_t>(row, asShallow(from_), changed, asShallow(to_), width_);
  else
    changeSamples<unsigned char>(row, from_, changed, asShallow(to_), width_);
  if (between_ != nullptr) {
    const std::size_t samples = width_ * static_cast<std::size_t>(samplesOf(to_));
    isDeep(to_) ? deepen(changed, newRow(), samples) : flatten(changed, newRow(), samples);
  }
  return writeRow();
}

int CTransPixelStream::Release() {
  between_.reset();
  width_ = 0;
  return RowFilter::Release();
}

} // namespace searchsystem
