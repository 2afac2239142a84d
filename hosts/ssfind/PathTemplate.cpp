#include "hosts/ssfind/PathTemplate.h"

namespace searchsystem::ssfind {

namespace {

std::string_view nameOf(std::string_view path) { return path.substr(path.rfind('/') + 1); }

std::string_view withoutExtension(std::string_view path) {
  const std::string_view name = nameOf(path);
  const std::size_t dot = name.rfind('.');
  const bool hasExtension = dot != name.npos && dot != 0;
  return path.substr(0, path.size() - (hasExtension ? name.size() - dot : 0));
}

} // namespace

PathTemplate::PathTemplate(std::string_view text) {
  constexpr struct {
    std::string_view text;
    Part part;
  } placeholders[] = {{"{}", Part::Path},
                      {"{/}", Part::Name},
                      {"{//}", Part::Folder},
                      {"{.}", Part::PathWithoutExtension},
                      {"{/.}", Part::NameWithoutExtension}};
  std::string plain;
  while (!text.empty()) {
    std::size_t taken = 1;
    for (const auto &[placeholder, part] : placeholders) {
      if (!text.starts_with(placeholder))
        continue;
      pieces_.push_back({std::move(plain), part});
      plain.clear();
      taken = placeholder.size();
      break;
    }
    if (taken == 1)
      plain += text.front();
    text.remove_prefix(taken);
  }
  pieces_.push_back({std::move(plain), Part::None});
}

std::string PathTemplate::textFor(std::string_view path) const {
  std::string safePath;
  if (path.starts_with('-'))
    path = safePath.append("./").append(path);
  std::string out;
  for (const Piece &piece : pieces_) {
    out += piece.text;
    append(out, piece.part, path);
  }
  return out;
}

void PathTemplate::append(std::string &out, Part part, std::string_view path) {
  switch (part) {
  case Part::None:
    break;
  case Part::Path:
    out += path;
    break;
  case Part::Name:
    out += nameOf(path);
    break;
  case Part::Folder: {
    const std::size_t slash = path.rfind('/');
    out += slash == path.npos ? "." : path.substr(0, slash == 0 ? 1 : slash);
    break;
  }
  case Part::PathWithoutExtension:
    out += withoutExtension(path);
    break;
  case Part::NameWithoutExtension:
    out += withoutExtension(nameOf(path));
    break;
  }
}

} // namespace searchsystem::ssfind
