#pragma once

#include "readers/documents/Filter.h"

#include <cstddef>
#include <string>

namespace searchsystem {

/// Undoes what a predictor did to the rows of a Flate or LZW stream (ISO 32000-2, 7.4.4.4): PNG's
/// filters, or TIFF's differences.
class PredictorFilter final : public ByteSink {
public:
  PredictorFilter(ByteSink &next, const FilterStep &step);

  /// Whether the step has a predictor and its rows a size that can be.
  [[nodiscard]] static bool isFor(const FilterStep &step) noexcept;

  [[nodiscard]] bool take(std::string_view piece) override;
  void finish() override;

private:
  [[nodiscard]] bool flush();
  void undoPNG();
  void undoTIFF();

  ByteSink &next_;
  const bool isPNG_;
  const std::size_t colors_;
  const std::size_t bits_;
  const std::size_t pixelSize_;
  const std::size_t rowSize_;
  /// With PNG's tag in front. It grows with what comes, not with what is claimed.
  std::string row_;
  std::string previous_;
  std::string out_;
};

} // namespace searchsystem
