#pragma once

#include "readers/documents/Filter.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace searchsystem {

/// A filter that decodes byte by byte and gathers what comes out.
class ByteFilter : public ByteSink {
public:
  [[nodiscard]] bool take(std::string_view piece) final;
  void finish() final;

protected:
  ByteFilter(ByteSink &next, InflationBudget &budget) noexcept : next_(next), budget_(budget) {}

  /// Appends to `out`; false at the end of the data.
  [[nodiscard]] virtual bool decode(unsigned char byte, std::string &out) = 0;
  /// Appends what an unfinished group stands for.
  virtual void end(std::string &out) = 0;

private:
  [[nodiscard]] bool flush();

  ByteSink &next_;
  InflationBudget &budget_;
  bool isDone_ = false;
  std::string out_;
};

/// ASCIIHexDecode (ISO 32000-2, 7.4.2).
class ASCIIHexFilter final : public ByteFilter {
public:
  ASCIIHexFilter(ByteSink &next, InflationBudget &budget) noexcept : ByteFilter(next, budget) {}

protected:
  [[nodiscard]] bool decode(unsigned char byte, std::string &out) override;
  void end(std::string &out) override;

private:
  int high_ = -1;
};

/// ASCII85Decode (ISO 32000-2, 7.4.3).
class ASCII85Filter final : public ByteFilter {
public:
  ASCII85Filter(ByteSink &next, InflationBudget &budget) noexcept : ByteFilter(next, budget) {}

protected:
  [[nodiscard]] bool decode(unsigned char byte, std::string &out) override;
  void end(std::string &out) override;

private:
  std::uint32_t group_ = 0;
  int count_ = 0;
  bool isAtStart_ = true;
};

/// RunLengthDecode (ISO 32000-2, 7.4.5).
class RunLengthFilter final : public ByteFilter {
public:
  RunLengthFilter(ByteSink &next, InflationBudget &budget) noexcept : ByteFilter(next, budget) {}

protected:
  [[nodiscard]] bool decode(unsigned char byte, std::string &out) override;
  void end(std::string &) override {}

private:
  int literal_ = 0;
  int repeat_ = 0;
};

} // namespace searchsystem
