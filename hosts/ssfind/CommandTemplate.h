#pragma once

#include "hosts/ssfind/PathTemplate.h"

#include <cstddef>
#include <string>
#include <variant>
#include <vector>

namespace searchsystem::ssfind {

/// A command to run for each match, or in a batch for many.
class CommandTemplate {
public:
  /// Without a placeholder in any argument, {} is added to them. A batch has one argument with a
  /// placeholder, which stands for as many as there are paths; its program has none. Else a
  /// message.
  [[nodiscard]] static std::variant<CommandTemplate, std::string>
  parse(const std::vector<std::string> &arguments, bool isBatch);

  [[nodiscard]] bool isBatch() const noexcept { return isBatch_; }
  /// Whether the program is the same for every match.
  [[nodiscard]] bool hasFixedProgram() const { return !arguments_.front().hasPlaceholder(); }

  /// The arguments for these paths, the program's name first; one path if this is no batch.
  [[nodiscard]] std::vector<std::string> argumentsFor(const std::vector<std::string> &paths) const;

private:
  CommandTemplate(std::vector<PathTemplate> arguments, bool isBatch)
      : arguments_(std::move(arguments)), isBatch_(isBatch) {}

  std::vector<PathTemplate> arguments_;
  bool isBatch_;
};

} // namespace searchsystem::ssfind
