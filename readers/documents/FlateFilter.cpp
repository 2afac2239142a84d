#include "readers/documents/FlateFilter.h"

#include "readers/documents/CharacterClass.h"

#include <algorithm>
#include <new>

namespace searchsystem {

namespace {

// Of zlib's format only the compressed data matter: its header says nothing that is needed, and the
// check sum would only cost time.
constexpr std::size_t headerSize = 2;
constexpr int largestWindow = -15;

} // namespace

Inflater::Inflater() {
  if (inflateInit2(&zlib, largestWindow) != Z_OK)
    throw std::bad_alloc();
}

Inflater::~Inflater() { inflateEnd(&zlib); }

InflaterPool::InflaterPool() = default;
InflaterPool::~InflaterPool() = default;

std::unique_ptr<Inflater> InflaterPool::take() {
  if (idle_.empty())
    return std::make_unique<Inflater>();
  std::unique_ptr<Inflater> inflater = std::move(idle_.back());
  idle_.pop_back();
  inflateReset2(&inflater->zlib, largestWindow);
  return inflater;
}

void InflaterPool::giveBack(std::unique_ptr<Inflater> inflater) {
  constexpr std::size_t most = 4;
  if (idle_.size() < most)
    idle_.push_back(std::move(inflater));
}

FlateFilter::FlateFilter(ByteSink &next, InflaterPool &pool, InflationBudget &budget)
    : next_(next), pool_(pool), budget_(budget), inflater_(pool.take()) {}

FlateFilter::~FlateFilter() { pool_.giveBack(std::move(inflater_)); }

bool FlateFilter::take(std::string_view piece) {
  if (isDone_)
    return false;
  // A line end too many behind the keyword `stream` would be the first byte, which no header can
  // be.
  while (passed_ == 0 && !piece.empty() && CharacterClass::isBlank(piece.front()))
    piece.remove_prefix(1);
  const std::size_t ofHeader = std::min(headerSize - passed_, piece.size());
  passed_ += ofHeader;
  piece.remove_prefix(ofHeader);
  if (piece.empty())
    return true;

  z_stream &zlib = inflater_->zlib;
  zlib.next_in = reinterpret_cast<const Bytef *>(piece.data());
  zlib.avail_in = static_cast<uInt>(piece.size());
  for (;;) {
    zlib.next_out = reinterpret_cast<Bytef *>(inflater_->out.data());
    zlib.avail_out = static_cast<uInt>(inflater_->out.size());
    const int result = inflate(&zlib, Z_NO_FLUSH);
    const std::size_t count = inflater_->out.size() - zlib.avail_out;
    if (count > 0 && (!budget_.spend(count) || !next_.take({inflater_->out.data(), count}))) {
      isDone_ = true;
      return false;
    }
    if (result != Z_OK && result != Z_BUF_ERROR) {
      isDone_ = true;
      return false;
    }
    if (zlib.avail_out != 0)
      return true;
  }
}

} // namespace searchsystem
