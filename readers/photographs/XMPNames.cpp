#include "readers/photographs/XMPNames.h"

namespace searchsystem {

void XMPNames::enter(const char *const *attributes, std::size_t depth) {
  constexpr std::string_view declaration = "xmlns";
  for (; attributes[0] != nullptr; attributes += 2) {
    std::string_view name = attributes[0];
    if (!name.starts_with(declaration) || prefixes_.size() >= mostPrefixes)
      continue;
    name.remove_prefix(declaration.size());
    if (name.starts_with(':'))
      name.remove_prefix(1);
    else if (!name.empty())
      continue;
    if (name.size() <= longestPrefix)
      prefixes_.push_back({std::string(name), xmpNamespaceOf(attributes[1]), depth});
  }
}

void XMPNames::leave(std::size_t depth) noexcept {
  while (!prefixes_.empty() && prefixes_.back().depth >= depth)
    prefixes_.pop_back();
}

XMPName XMPNames::nameOf(std::string_view qualified) const noexcept {
  const std::size_t colon = qualified.find(':');
  const bool hasPrefix = colon != std::string_view::npos;
  const std::string_view prefix = hasPrefix ? qualified.substr(0, colon) : std::string_view();
  XMPName name{XMPNamespace::other, hasPrefix ? qualified.substr(colon + 1) : qualified};
  for (auto one = prefixes_.rbegin(); one != prefixes_.rend(); ++one) {
    if (one->text == prefix) {
      name.space = one->space;
      break;
    }
  }
  return name;
}

} // namespace searchsystem
