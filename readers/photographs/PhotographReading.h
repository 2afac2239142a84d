#pragma once

#include "readers/photographs/FieldCollector.h"
#include "readers/photographs/ReadBudget.h"

namespace searchsystem {

/// What all parts of the reading of one photograph share.
struct PhotographReading {
  ReadBudget budget;
  FieldCollector fields;
  /// How many blocks the present one lies in.
  int nesting = 0;

  explicit PhotographReading(PhotographSink &sink) : fields(sink, budget) {}
};

/// Held while a block is read that may lie in others, and hold others.
class NestedBlock {
public:
  explicit NestedBlock(PhotographReading &reading) noexcept : reading_(reading) {
    ++reading_.nesting;
  }
  ~NestedBlock() { --reading_.nesting; }
  NestedBlock(const NestedBlock &) = delete;
  NestedBlock &operator=(const NestedBlock &) = delete;

  [[nodiscard]] bool isTooDeep() const noexcept {
    return reading_.nesting > ReadBudget::mostNesting;
  }

private:
  PhotographReading &reading_;
};

} // namespace searchsystem
