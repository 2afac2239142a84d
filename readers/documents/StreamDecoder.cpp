#include "readers/documents/StreamDecoder.h"

#include "readers/documents/CharacterClass.h"

#include <algorithm>
#include <memory>

namespace searchsystem {

namespace {

constexpr std::size_t pieceSize = 65536;

/// Hands on to a function and remembers that it wants no more.
class FunctionSink final : public ByteSink {
public:
  explicit FunctionSink(const StreamDecoder::Take &take) noexcept : take_(take) {}
  [[nodiscard]] bool take(std::string_view piece) override {
    if (!isStopped_ && !piece.empty())
      isStopped_ = !take_(piece);
    return !isStopped_;
  }
  [[nodiscard]] bool isStopped() const noexcept { return isStopped_; }

private:
  const StreamDecoder::Take &take_;
  bool isStopped_ = false;
};

} // namespace

bool StreamDecoder::decode(const Stream &stream, const Encryption *encryption, const Take &take) {
  bool isOpaque = false;
  const std::vector<FilterStep> steps = stepsOf(stream.dictionary, isOpaque);
  if (isOpaque)
    return true;
  FunctionSink last(take);
  FilterChain chain(steps, last, pool_, budget_);
  std::unique_ptr<ByteSink> decryption;
  if (encryption != nullptr)
    decryption =
        encryption->makeFilter(methodOf(stream.dictionary, *encryption), stream.object, chain);
  ByteSink &first = decryption != nullptr ? *decryption : chain;
  const std::uint64_t size = encodedSize(stream);
  if (feed(stream.dataOffset, size, first) || !last.isStopped())
    first.finish();
  return !last.isStopped() && !hasMetLimit();
}

std::string StreamDecoder::decoded(const Stream &stream, const Encryption *encryption,
                                   std::size_t most) {
  std::string bytes;
  decode(stream, encryption, [&](std::string_view piece) {
    bytes += piece.substr(0, most - bytes.size());
    return bytes.size() < most;
  });
  return bytes;
}

bool StreamDecoder::feed(std::uint64_t offset, std::uint64_t size, ByteSink &sink) {
  std::unique_ptr<char[]> room;
  const std::uint64_t end = offset + size;
  while (offset < end) {
    std::string_view piece;
    auto count = static_cast<std::size_t>(std::min<std::uint64_t>(pieceSize, end - offset));
    if (window_.isWhole()) {
      piece = window_.at(offset, count).substr(0, count);
    } else {
      if (room == nullptr)
        room.reset(new char[count]);
      count = window_.read(offset, room.get(), count);
      piece = {room.get(), count};
    }
    if (piece.empty())
      return true;
    if (!rawBudget_.spend(piece.size()) || !sink.take(piece))
      return false;
    offset += piece.size();
  }
  return true;
}

std::uint64_t StreamDecoder::encodedSize(const Stream &stream) {
  constexpr std::size_t looked = 32;
  const std::uint64_t begin = stream.dataOffset;
  const std::uint64_t rest = window_.size() - std::min(begin, window_.size());
  const std::int64_t stated = resolver_.get(stream.dictionary, "Length").integer(-1);
  if (stated >= 0 && static_cast<std::uint64_t>(stated) <= rest) {
    std::string_view view = window_.at(begin + static_cast<std::uint64_t>(stated), looked);
    view = view.substr(0, looked);
    while (!view.empty() && CharacterClass::isBlank(view.front()))
      view.remove_prefix(1);
    if (view.starts_with("endstream") || view.starts_with("endobj"))
      return static_cast<std::uint64_t>(stated);
  }
  std::uint64_t end = find(begin, endOfStream_);
  if (end == window_.size())
    end = find(begin, endOfObject_);
  if (end == window_.size())
    return rest;
  // The line end in front of the word is not of the data.
  std::uint64_t size = end - begin;
  const std::size_t tail = static_cast<std::size_t>(std::min<std::uint64_t>(size, 2));
  const std::string_view view = window_.at(end - tail, tail).substr(0, tail);
  if (view.ends_with("\r\n"))
    return size - 2;
  return size - (view.ends_with('\n') || view.ends_with('\r') ? 1 : 0);
}

std::uint64_t StreamDecoder::find(std::uint64_t offset, NextWord &next) {
  if (next.from <= offset && offset <= next.place)
    return next.place;
  next.from = offset;
  next.place = window_.size();
  while (offset < window_.size()) {
    const std::string_view view = window_.at(offset, pieceSize);
    if (view.size() < next.word.size())
      break;
    const std::size_t place = view.find(next.word);
    if (!allowance_.spend(std::min(place, view.size())))
      break;
    if (place != std::string_view::npos) {
      next.place = offset + place;
      break;
    }
    if (offset + view.size() >= window_.size())
      break;
    offset += view.size() - (next.word.size() - 1);
  }
  return next.place;
}

Encryption::Method StreamDecoder::methodOf(const Dictionary &dictionary,
                                           const Encryption &encryption) {
  const Object type = resolver_.get(dictionary, "Type");
  // 7.5.8.2: cross-reference streams are not encrypted.
  if (type.isName("XRef"))
    return Encryption::Method::none;
  // 7.4.10: a filter named Crypt, the first one, says by its parameters which crypt filter it is.
  Object filter = resolver_.get(dictionary, "Filter");
  Object parameters = resolver_.get(dictionary, "DecodeParms");
  if (filter.isArray() && !filter.array().empty())
    filter = resolver_.resolve(filter.array().front());
  if (parameters.isArray() && !parameters.array().empty())
    parameters = resolver_.resolve(parameters.array().front());
  if (filter.isName("Crypt"))
    return encryption.ofFilter(resolver_.get(parameters.dictionary(), "Name").name());
  if (type.isName("Metadata") && !encryption.encryptsMetadata())
    return Encryption::Method::none;
  return encryption.ofStreams();
}

std::vector<FilterStep> StreamDecoder::stepsOf(const Dictionary &dictionary, bool &isOpaque) {
  std::vector<FilterStep> steps;
  const Object filter = resolver_.get(dictionary, "Filter");
  const Object parameters = resolver_.get(dictionary, "DecodeParms");
  const std::span<const Object> names =
      filter.isArray() ? filter.array() : std::span(&filter, filter.isName() ? 1 : 0);
  const std::span<const Object> sets =
      parameters.isArray() ? parameters.array()
                           : std::span(&parameters, parameters.isDictionary() ? 1 : 0);
  isOpaque = names.size() > FilterChain::longest;
  for (std::size_t i = 0; i < names.size() && !isOpaque; ++i) {
    FilterStep step;
    step.kind = FilterStep::kindOf(resolver_.resolve(names[i]).name());
    isOpaque |= step.kind == FilterStep::Kind::opaque;
    if (i < sets.size()) {
      const Dictionary set = resolver_.resolve(sets[i]).dictionary();
      step.predictor = resolver_.get(set, "Predictor").integer(step.predictor);
      step.colors = resolver_.get(set, "Colors").integer(step.colors);
      step.bitsPerComponent = resolver_.get(set, "BitsPerComponent").integer(step.bitsPerComponent);
      step.columns = resolver_.get(set, "Columns").integer(step.columns);
      step.changesEarly = resolver_.get(set, "EarlyChange").integer(1) != 0;
    }
    steps.push_back(step);
  }
  return steps;
}

} // namespace searchsystem
