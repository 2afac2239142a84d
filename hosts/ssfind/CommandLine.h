#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace searchsystem::ssfind {

/// The arguments as typed, to show the user which one is wrong.
class CommandLine {
public:
  CommandLine(int argc, const char *const *argv);

  /// Without the program's name. Places are indexes into it.
  [[nodiscard]] const std::vector<std::string> &arguments() const noexcept { return arguments_; }

  /// Where an option stands; `name` is without its dashes, `letter` 0 when there is none.
  [[nodiscard]] std::vector<std::size_t> placesOf(std::string_view name, char letter) const;

  /// Where an unknown argument stands; `text` may be the rest of several letters.
  [[nodiscard]] std::vector<std::size_t> placesOfUnknown(std::string_view text) const;

  /// Lines that mark the places, shown with their neighbours only; empty when there are no places.
  [[nodiscard]] std::string marked(const std::vector<std::size_t> &places) const;

private:
  std::vector<std::string> arguments_;
};

} // namespace searchsystem::ssfind
