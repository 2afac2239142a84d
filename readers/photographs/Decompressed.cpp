#include "readers/photographs/Decompressed.h"

#include <algorithm>
#include <array>
#include <brotli/decode.h>
#include <cstddef>
#include <memory>
#include <new>

// The bytes to be inflated are constant.
#define ZLIB_CONST
#include <zlib.h>

namespace searchsystem {

namespace {

/// Takes what came out; false where it is enough.
bool append(std::string &result, std::string_view piece, ReadBudget &budget) {
  piece = piece.substr(0, ReadBudget::longestPacket - result.size());
  if (!budget.spendBytes(piece.size()))
    return false;
  result += piece;
  return result.size() < ReadBudget::longestPacket;
}

} // namespace

std::string inflated(std::string_view bytes, ReadBudget &budget) {
  z_stream zlib{};
  if (inflateInit(&zlib) != Z_OK)
    throw std::bad_alloc();
  const std::unique_ptr<z_stream, decltype(&inflateEnd)> end(&zlib, &inflateEnd);
  zlib.next_in = reinterpret_cast<const Bytef *>(bytes.data());
  zlib.avail_in = static_cast<uInt>(bytes.size());
  std::string result;
  std::array<char, 16384> room;
  int state = Z_OK;
  do {
    zlib.next_out = reinterpret_cast<Bytef *>(room.data());
    zlib.avail_out = room.size();
    state = inflate(&zlib, Z_NO_FLUSH);
  } while (append(result, {room.data(), room.size() - zlib.avail_out}, budget) && state == Z_OK);
  return result;
}

std::string unbrotlied(std::string_view bytes, ReadBudget &budget) {
  const std::unique_ptr<BrotliDecoderState, decltype(&BrotliDecoderDestroyInstance)> decoder(
      BrotliDecoderCreateInstance(nullptr, nullptr, nullptr), &BrotliDecoderDestroyInstance);
  if (decoder == nullptr)
    throw std::bad_alloc();
  const auto *next = reinterpret_cast<const std::uint8_t *>(bytes.data());
  std::size_t left = bytes.size();
  std::string result;
  std::array<std::uint8_t, 16384> room;
  BrotliDecoderResult state = BROTLI_DECODER_RESULT_ERROR;
  std::size_t size = 0;
  do {
    std::uint8_t *out = room.data();
    std::size_t roomLeft = room.size();
    state = BrotliDecoderDecompressStream(decoder.get(), &left, &next, &roomLeft, &out, nullptr);
    size = room.size() - roomLeft;
  } while (append(result, {reinterpret_cast<const char *>(room.data()), size}, budget) &&
           state == BROTLI_DECODER_RESULT_NEEDS_MORE_OUTPUT);
  return result;
}

} // namespace searchsystem
