#include "readers/documents/Filter.h"

#include "readers/documents/ByteFilters.h"
#include "readers/documents/FlateFilter.h"
#include "readers/documents/LZWFilter.h"
#include "readers/documents/PredictorFilter.h"

#include <algorithm>
#include <array>

namespace searchsystem {

namespace {

/// Takes nothing.
class OpaqueFilter final : public ByteSink {
public:
  explicit OpaqueFilter(ByteSink &next) noexcept : next_(next) {}
  [[nodiscard]] bool take(std::string_view) override { return false; }
  void finish() override { next_.finish(); }

private:
  ByteSink &next_;
};

} // namespace

FilterStep::Kind FilterStep::kindOf(std::string_view name) noexcept {
  struct Row {
    std::string_view name;
    std::string_view shortName;
    Kind kind;
  };
  static constexpr std::array rows{
      Row{"FlateDecode", "Fl", Kind::flate},         Row{"LZWDecode", "LZW", Kind::lzw},
      Row{"ASCII85Decode", "A85", Kind::ascii85},    Row{"ASCIIHexDecode", "AHx", Kind::asciiHex},
      Row{"RunLengthDecode", "RL", Kind::runLength}, Row{"Crypt", "Crypt", Kind::crypt},
  };
  const auto *const row = std::find_if(rows.begin(), rows.end(), [&](const Row &candidate) {
    return candidate.name == name || candidate.shortName == name;
  });
  return row == rows.end() ? Kind::opaque : row->kind;
}

FilterChain::FilterChain(std::span<const FilterStep> steps, ByteSink &last, InflaterPool &pool,
                         InflationBudget &budget)
    : first_(&last) {
  for (std::size_t i = steps.size(); i > 0; --i) {
    const FilterStep &step = steps[i - 1];
    const bool canPredict =
        step.kind == FilterStep::Kind::flate || step.kind == FilterStep::Kind::lzw;
    if (canPredict && PredictorFilter::isFor(step))
      add(std::make_unique<PredictorFilter>(*first_, step));
    switch (step.kind) {
    case FilterStep::Kind::asciiHex:
      add(std::make_unique<ASCIIHexFilter>(*first_, budget));
      break;
    case FilterStep::Kind::ascii85:
      add(std::make_unique<ASCII85Filter>(*first_, budget));
      break;
    case FilterStep::Kind::lzw:
      add(std::make_unique<LZWFilter>(*first_, budget, step.changesEarly));
      break;
    case FilterStep::Kind::flate:
      add(std::make_unique<FlateFilter>(*first_, pool, budget));
      break;
    case FilterStep::Kind::runLength:
      add(std::make_unique<RunLengthFilter>(*first_, budget));
      break;
    case FilterStep::Kind::crypt:
      break;
    case FilterStep::Kind::opaque:
      add(std::make_unique<OpaqueFilter>(*first_));
      break;
    }
  }
}

void FilterChain::add(std::unique_ptr<ByteSink> filter) {
  filters_.push_back(std::move(filter));
  first_ = filters_.back().get();
}

} // namespace searchsystem
