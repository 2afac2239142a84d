#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace searchsystem::ssfind {

/// A text with placeholders for parts of a match's path: {} the path, {/} its name, {//} its
/// folder,
/// {.} the path without the extension, {/.} the name without it. Other braces stay as they are.
class PathTemplate {
public:
  explicit PathTemplate(std::string_view text);

  [[nodiscard]] bool hasPlaceholder() const noexcept { return pieces_.size() > 1; }

  /// The text for that path. A path that begins with a dash gets ./ before it, so that no command
  /// takes it for an option.
  [[nodiscard]] std::string textFor(std::string_view path) const;

private:
  enum class Part { None, Path, Name, Folder, PathWithoutExtension, NameWithoutExtension };
  /// A text as it is, and what follows it.
  struct Piece {
    std::string text;
    Part part;
  };

  static void append(std::string &out, Part part, std::string_view path);

  /// The last has no part.
  std::vector<Piece> pieces_;
};

} // namespace searchsystem::ssfind
