#pragma once

#include "hosts/ssfind/TextError.h"

#include <cstdint>
#include <string_view>
#include <variant>

namespace searchsystem::ssfind {

/// A range of sizes in bytes, both ends included.
struct SizeRange {
  std::uint64_t least;
  std::uint64_t most;

  [[nodiscard]] bool contains(std::uint64_t size) const noexcept {
    return size >= least && size <= most;
  }
};

/// Reads FROM..TO, FROM.. or +FROM, ..TO or -TO, or a single size, which means just that. A size is
/// a number, as in 1.5, with a unit in any case: b, k, M, G, T are powers of 1000, ki, Mi, Gi, Ti
/// of 1024, and a B behind them changes nothing.
[[nodiscard]] std::variant<SizeRange, TextError> parseSizeRange(std::string_view text);

} // namespace searchsystem::ssfind
