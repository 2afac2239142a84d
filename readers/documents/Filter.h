#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace searchsystem {

/// Takes bytes in pieces.
class ByteSink {
public:
  ByteSink() = default;
  ByteSink(const ByteSink &) = delete;
  ByteSink &operator=(const ByteSink &) = delete;
  virtual ~ByteSink() = default;
  /// False: no more is wanted.
  [[nodiscard]] virtual bool take(std::string_view piece) = 0;
  /// All was given.
  virtual void finish() {}
};

/// What all streams of a document together may still give.
class InflationBudget {
public:
  explicit InflationBudget(std::uint64_t most) noexcept : left_(most) {}
  /// False: it is spent.
  [[nodiscard]] bool spend(std::uint64_t bytes) noexcept {
    isSpent_ |= bytes > left_;
    left_ -= isSpent_ ? left_ : bytes;
    return !isSpent_;
  }
  [[nodiscard]] bool isSpent() const noexcept { return isSpent_; }

private:
  std::uint64_t left_;
  bool isSpent_ = false;
};

class Inflater;

/// Decompressors that are used again, since setting one up costs more than a small stream.
class InflaterPool {
public:
  InflaterPool();
  ~InflaterPool();
  InflaterPool(const InflaterPool &) = delete;
  InflaterPool &operator=(const InflaterPool &) = delete;
  [[nodiscard]] std::unique_ptr<Inflater> take();
  void giveBack(std::unique_ptr<Inflater> inflater);

private:
  std::vector<std::unique_ptr<Inflater>> idle_;
};

/// One filter of a stream with its parameters (ISO 32000-2, 7.4).
struct FilterStep {
  enum class Kind : std::uint8_t {
    asciiHex,
    ascii85,
    lzw,
    flate,
    runLength,
    crypt,
    /// Image data or a filter that nobody knows: gives nothing.
    opaque,
  };
  /// Also the short names of inline images.
  [[nodiscard]] static Kind kindOf(std::string_view name) noexcept;

  Kind kind = Kind::opaque;
  std::int64_t predictor = 1;
  std::int64_t colors = 1;
  std::int64_t bitsPerComponent = 8;
  std::int64_t columns = 1;
  bool changesEarly = true;
};

/// Filters, one behind the other. What is taken comes out decoded at `last`; broken data give what
/// is there. `take` answers false as well when no more can come.
class FilterChain final : public ByteSink {
public:
  static constexpr std::size_t longest = 8;

  FilterChain(std::span<const FilterStep> steps, ByteSink &last, InflaterPool &pool,
              InflationBudget &budget);

  [[nodiscard]] bool take(std::string_view piece) override { return first_->take(piece); }
  void finish() override { first_->finish(); }

private:
  void add(std::unique_ptr<ByteSink> filter);

  std::vector<std::unique_ptr<ByteSink>> filters_;
  ByteSink *first_;
};

} // namespace searchsystem
