#include "readers/process/PhotographAnswer.h"

#include "readers/process/SendRecord.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace searchsystem {

namespace {

constexpr std::size_t partHeader = 1 + sizeof(std::uint32_t);
constexpr std::size_t longestContent = longestPiece - partHeader;

/// How long an answer may wait for others.
constexpr std::chrono::milliseconds longestWait{1};

/// The beginning of a text in UTF-8, up to the end of a character.
std::string_view cut(std::string_view text, std::size_t most) noexcept {
  std::size_t size = std::min(text.size(), most);
  while (size < text.size() && size > 0 && (static_cast<unsigned char>(text[size]) & 0xC0) == 0x80)
    --size;
  return text.substr(0, size);
}

} // namespace

PhotographAnswer::PhotographAnswer()
    : record_(std::make_unique_for_overwrite<char[]>(1 + longestPiece)) {}

bool PhotographAnswer::takeField(std::string_view name, std::string_view text) {
  add(PhotographPart::name, name.substr(0, longestContent));
  while (!text.empty()) {
    const std::string_view piece = text.substr(0, longestContent);
    add(PhotographPart::text, piece);
    text.remove_prefix(piece.size());
  }
  return isWanted_;
}

void PhotographAnswer::takeDate(const PhotographDate &date) {
  std::array<char, 80> text{};
  const int size =
      std::snprintf(text.data(), text.size(), "%04d/%02d/%02d %02d:%02d:%02d", date.year,
                    date.month, date.day, date.hour, date.minute, date.second);
  add(PhotographPart::date, {text.data(), static_cast<std::size_t>(size)});
}

void PhotographAnswer::takeCamera(std::string_view maker, std::string_view model) {
  if (!maker.empty())
    add(PhotographPart::maker, cut(maker, longestCameraText));
  if (!model.empty())
    add(PhotographPart::model, cut(model, longestCameraText));
}

bool PhotographAnswer::end(UnreadReason reason, bool mayWait) noexcept {
  const char byte = static_cast<char>(reason);
  add(PhotographPart::end, {&byte, 1});
  if (!mayWait || Clock::now() - waitsSince_ >= longestWait)
    send();
  return isWanted_;
}

void PhotographAnswer::add(PhotographPart part, std::string_view content) noexcept {
  if (longestPiece - size_ < partHeader + content.size())
    send();
  if (size_ == 0)
    waitsSince_ = Clock::now();
  char *const place = record_.get() + 1 + size_;
  const auto length = static_cast<std::uint32_t>(content.size());
  *place = static_cast<char>(part);
  std::memcpy(place + 1, &length, sizeof length);
  std::memcpy(place + partHeader, content.data(), content.size());
  size_ += partHeader + content.size();
}

void PhotographAnswer::send() noexcept {
  record_[0] = static_cast<char>(ReaderRecord::photograph);
  isWanted_ = isWanted_ && sendRecord(record_.get(), 1 + size_);
  size_ = 0;
}

} // namespace searchsystem
