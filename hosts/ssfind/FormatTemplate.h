#pragma once

#include "hosts/ssfind/MatchDetails.h"
#include "hosts/ssfind/TextError.h"

#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace searchsystem::ssfind {

/// How the user wants a match to be written: a text with {path}, {name}, {size} in bytes,
/// {modified} and {taken} in local time, where {{ and }} are braces, and \t, \n, \0 and \\ such
/// characters.
class FormatTemplate {
public:
  [[nodiscard]] static std::variant<FormatTemplate, TextError> parse(std::string_view text);

  /// Whether append() needs these details.
  [[nodiscard]] bool needsStatus() const { return has(Field::Size) || has(Field::Modified); }
  [[nodiscard]] bool needsPhotograph() const { return has(Field::Taken); }

  /// Writes a match; with `isForTerminal` names are escaped. What is not known is a dash.
  void append(std::string &out, std::string_view path, const MatchDetails &details,
              bool isForTerminal) const;

private:
  enum class Field { None, Path, Name, Size, Modified, Taken };
  /// A text as it is, and what follows it.
  struct Piece {
    std::string text;
    Field field;
  };

  [[nodiscard]] static Field fieldOf(std::string_view name) noexcept;
  [[nodiscard]] bool has(Field field) const;

  std::vector<Piece> pieces_;
};

} // namespace searchsystem::ssfind
