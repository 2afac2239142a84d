#include "readers/documents/IndirectHeader.h"

#include "readers/documents/CharacterClass.h"

namespace searchsystem {

namespace {

constexpr std::string_view word = "obj";
constexpr std::size_t mostDigits = 10;
constexpr std::size_t mostBlanks = 64;

std::size_t blanksAt(std::string_view bytes, std::size_t from) noexcept {
  std::size_t at = from;
  while (at < bytes.size() && at - from < mostBlanks && CharacterClass::isBlank(bytes[at]))
    ++at;
  return at - from;
}

std::size_t digitsAt(std::string_view bytes, std::size_t from) noexcept {
  std::size_t at = from;
  while (at < bytes.size() && at - from <= mostDigits && CharacterClass::isDigit(bytes[at]))
    ++at;
  return at - from;
}

std::optional<std::uint32_t> valueOf(std::string_view digits) noexcept {
  if (digits.empty() || digits.size() > mostDigits)
    return std::nullopt;
  std::uint64_t value = 0;
  for (const char digit : digits)
    value = value * 10 + static_cast<std::uint64_t>(digit - '0');
  return value > UINT32_MAX ? std::nullopt
                            : std::optional<std::uint32_t>(static_cast<std::uint32_t>(value));
}

} // namespace

std::optional<IndirectHeader> IndirectHeader::at(std::string_view bytes) noexcept {
  const std::size_t numberAt = blanksAt(bytes, 0);
  const std::size_t numberSize = digitsAt(bytes, numberAt);
  const std::size_t gap = blanksAt(bytes, numberAt + numberSize);
  const std::size_t generationAt = numberAt + numberSize + gap;
  const std::size_t generationSize = digitsAt(bytes, generationAt);
  const std::size_t wordAt =
      generationAt + generationSize + blanksAt(bytes, generationAt + generationSize);
  const auto number = valueOf(bytes.substr(numberAt, numberSize));
  if (gap == 0 || !number || wordAt > bytes.size() || !bytes.substr(wordAt).starts_with(word))
    return std::nullopt;
  const auto generation = valueOf(bytes.substr(generationAt, generationSize));
  if (!generation)
    return std::nullopt;
  return IndirectHeader{{*number, *generation}, wordAt + word.size()};
}

std::optional<IndirectHeader> IndirectHeader::endingAt(std::string_view bytes,
                                                       std::size_t place) noexcept {
  std::size_t at = place;
  const auto goBack = [&](bool (*isOfIt)(char), std::size_t most) {
    const std::size_t end = at;
    while (at > 0 && end - at < most && isOfIt(bytes[at - 1]))
      --at;
    return end - at;
  };
  goBack(CharacterClass::isBlank, mostBlanks);
  if (goBack(CharacterClass::isDigit, mostDigits) == 0 ||
      goBack(CharacterClass::isBlank, mostBlanks) == 0 ||
      goBack(CharacterClass::isDigit, mostDigits) == 0)
    return std::nullopt;
  auto header = IndirectHeader::at(bytes.substr(at));
  return header && at + header->size == place + word.size() ? header : std::nullopt;
}

} // namespace searchsystem
