#pragma once

#include "readers/documents/Filter.h"

#include <array>
#include <cstddef>
#include <memory>

// The bytes to be inflated are constant.
#define ZLIB_CONST
#include <zlib.h>

namespace searchsystem {

/// The state of zlib and the room for what comes out.
class Inflater {
public:
  static constexpr std::size_t room = 65536;

  /// Throws `std::bad_alloc`.
  Inflater();
  ~Inflater();
  Inflater(const Inflater &) = delete;
  Inflater &operator=(const Inflater &) = delete;

  z_stream zlib{};
  std::array<char, room> out;
};

/// FlateDecode (ISO 32000-2, 7.4.4). Header and check sum do not matter.
class FlateFilter final : public ByteSink {
public:
  FlateFilter(ByteSink &next, InflaterPool &pool, InflationBudget &budget);
  ~FlateFilter() override;

  [[nodiscard]] bool take(std::string_view piece) override;
  void finish() override { next_.finish(); }

private:
  ByteSink &next_;
  InflaterPool &pool_;
  InflationBudget &budget_;
  std::unique_ptr<Inflater> inflater_;
  /// Of the header.
  std::size_t passed_ = 0;
  bool isDone_ = false;
};

} // namespace searchsystem
