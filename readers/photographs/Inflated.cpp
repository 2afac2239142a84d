#include "readers/photographs/Inflated.h"

#include <algorithm>
#include <array>
#include <memory>
#include <new>

// The bytes to be inflated are constant.
#define ZLIB_CONST
#include <zlib.h>

namespace searchsystem {

std::string inflated(std::string_view bytes, std::size_t most, ReadBudget &budget) {
  z_stream zlib{};
  if (inflateInit(&zlib) != Z_OK)
    throw std::bad_alloc();
  const std::unique_ptr<z_stream, decltype(&inflateEnd)> end(&zlib, &inflateEnd);
  zlib.next_in = reinterpret_cast<const Bytef *>(bytes.data());
  zlib.avail_in = static_cast<uInt>(bytes.size());
  std::string result;
  std::array<char, 16384> room;
  for (int state = Z_OK; state == Z_OK && result.size() < most;) {
    zlib.next_out = reinterpret_cast<Bytef *>(room.data());
    zlib.avail_out = room.size();
    state = inflate(&zlib, Z_NO_FLUSH);
    const std::size_t size = std::min(room.size() - zlib.avail_out, most - result.size());
    if (!budget.spendBytes(size))
      break;
    result.append(room.data(), size);
  }
  return result;
}

} // namespace searchsystem
