#pragma once

#include "readers/photographs/PhotographSink.h"
#include "readers/photographs/ReadBudget.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>

namespace searchsystem {

/// Where a date stands. Of several dates the one of the first of these counts.
enum class DateSource : std::uint8_t {
  exifOriginal,
  exifDigitized,
  xmpOriginal,
  sidecarOriginal,
  xmpPhotoshopCreated,
  sidecarPhotoshopCreated,
  xmpCreated,
  sidecarCreated,
  iptcCreated,
  pngCreation,
  none,
};

enum class FieldRole : std::uint8_t { maker, model, other };

/// Brings the texts of a photograph into the form in which they are compared and hands them on,
/// each once; and chooses among its dates, makers and models.
class FieldCollector {
public:
  /// Of all texts together. Another one that would be too much ends the reading.
  static constexpr std::size_t mostTextBytes = std::size_t{4} << 20;

  FieldCollector(PhotographSink &sink, ReadBudget &budget) : sink_(sink), budget_(budget) {}

  /// Text in UTF-8, which is not checked.
  void add(std::string_view name, std::string_view text, FieldRole role = FieldRole::other);
  /// The same, of makers and models that count only where no others are found.
  void addSecondary(std::string_view name, std::string_view text, FieldRole role);
  void addDate(DateSource source, const std::optional<PhotographDate> &date) noexcept;
  /// Hands on what counts of dates, makers and models. To be called once, at the end.
  void finish();

  [[nodiscard]] bool isTooLarge() const noexcept { return isTooLarge_; }
  /// The sink wants no more.
  [[nodiscard]] bool isStopped() const noexcept { return isStopped_; }

private:
  /// The text in its form for comparison, empty if it is not handed on.
  std::string handOn(std::string_view name, std::string_view text);

  PhotographSink &sink_;
  ReadBudget &budget_;
  std::unordered_set<std::string> known_;
  std::size_t textBytes_ = 0;
  DateSource dateSource_ = DateSource::none;
  PhotographDate date_;
  std::array<std::string, 2> camera_;
  std::array<std::string, 2> secondaryCamera_;
  bool isTooLarge_ = false;
  bool isStopped_ = false;
};

} // namespace searchsystem
