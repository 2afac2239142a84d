#include "hosts/ssfind/FormatTemplate.h"

#include "hosts/ssfind/TimeText.h"
#include "hosts/ssfind/VisibleText.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace searchsystem::ssfind {

namespace {

void appendName(std::string &out, std::string_view name, bool isForTerminal) {
  if (isForTerminal)
    appendVisible(out, name);
  else
    out += name;
}

void appendTime(std::string &out, const std::optional<std::timespec> &time) {
  if (!time || !appendClockTime(out, *time))
    out += '-';
}

} // namespace

FormatTemplate::Field FormatTemplate::fieldOf(std::string_view name) noexcept {
  constexpr std::pair<std::string_view, Field> fields[] = {{"path", Field::Path},
                                                           {"name", Field::Name},
                                                           {"size", Field::Size},
                                                           {"modified", Field::Modified},
                                                           {"taken", Field::Taken}};
  const auto *const found = std::find_if(std::begin(fields), std::end(fields),
                                         [&](const auto &field) { return field.first == name; });
  return found != std::end(fields) ? found->second : Field::None;
}

std::variant<FormatTemplate, TextError> FormatTemplate::parse(std::string_view text) {
  constexpr std::string_view letters = "tn0\\", characters{"\t\n\0\\", 4};
  FormatTemplate made;
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    const char next = i + 1 < text.size() ? text[i + 1] : '\0';
    if (c == '\\') {
      const std::size_t which = i + 1 < text.size() ? letters.find(next) : letters.npos;
      if (which == letters.npos)
        return TextError{R"(a backslash begins \t, \n, \0 or \\)", i};
      plain += characters[which];
      ++i;
    } else if ((c == '{' || c == '}') && next == c) {
      plain += c;
      ++i;
    } else if (c == '}') {
      return TextError{"this brace closes nothing; }} is a brace", i};
    } else if (c == '{') {
      const std::size_t end = text.find('}', i);
      const Field field = end == text.npos ? Field::None : fieldOf(text.substr(i + 1, end - i - 1));
      if (field == Field::None)
        return TextError{"in braces are path, name, size, modified or taken; {{ is a brace", i};
      made.pieces_.push_back({std::move(plain), field});
      plain.clear();
      i = end;
    } else {
      plain += c;
    }
  }
  made.pieces_.push_back({std::move(plain), Field::None});
  return made;
}

bool FormatTemplate::has(Field field) const {
  return std::any_of(pieces_.begin(), pieces_.end(),
                     [&](const Piece &piece) { return piece.field == field; });
}

void FormatTemplate::append(std::string &out, std::string_view path, const MatchDetails &details,
                            bool isForTerminal) const {
  for (const Piece &piece : pieces_) {
    out += piece.text;
    switch (piece.field) {
    case Field::None:
      break;
    case Field::Path:
      appendName(out, path, isForTerminal);
      break;
    case Field::Name:
      appendName(out, path.substr(path.rfind('/') + 1), isForTerminal);
      break;
    case Field::Size:
      out += details.status ? std::to_string(details.status->size) : "-";
      break;
    case Field::Modified:
      appendTime(out, details.modified());
      break;
    case Field::Taken:
      appendTime(out, details.photograph.taken);
      break;
    }
  }
}

} // namespace searchsystem::ssfind
