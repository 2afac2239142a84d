#pragma once

#include "readers/documents/Filter.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace searchsystem {

/// LZWDecode (ISO 32000-2, 7.4.4.2).
class LZWFilter final : public ByteSink {
public:
  LZWFilter(ByteSink &next, InflationBudget &budget, bool changesEarly);

  [[nodiscard]] bool take(std::string_view piece) override;
  void finish() override;

private:
  static constexpr unsigned clearCode = 256, endCode = 257, firstCode = 258, codes = 4096;

  [[nodiscard]] bool takeCode(unsigned code);
  /// Appends the text of a code and answers where it begins.
  std::size_t append(unsigned code);
  [[nodiscard]] bool flush();

  ByteSink &next_;
  InflationBudget &budget_;
  const unsigned early_;
  std::uint32_t bits_ = 0;
  unsigned bitCount_ = 0;
  unsigned width_ = 9;
  unsigned nextCode_ = firstCode;
  unsigned lastCode_ = clearCode;
  bool isDone_ = false;
  /// A code's text is that of its prefix and one byte more.
  std::array<std::uint16_t, codes> prefixes_;
  std::array<std::uint16_t, codes> lengths_;
  std::array<char, codes> bytes_;
  std::string out_;
};

} // namespace searchsystem
