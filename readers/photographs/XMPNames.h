#pragma once

#include "readers/photographs/XMPProperties.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace searchsystem {

/// A name of an XML document without its prefix, and the namespace of that.
struct XMPName {
  XMPNamespace space = XMPNamespace::other;
  std::string_view local;
};

/// Which prefix stands for which namespace, at one place of a document (Namespaces in XML 1.0, 6).
///
/// The XML parser could do it, but copies a namespace's whole name for each attribute in it, which
/// would make time quadratic.
class XMPNames {
public:
  /// Notes the declarations among the attributes of an element at this depth: names and values by
  /// turns, then null.
  void enter(const char *const *attributes, std::size_t depth);
  /// Forgets those of an element at this depth.
  void leave(std::size_t depth) noexcept;

  [[nodiscard]] XMPName nameOf(std::string_view qualified) const noexcept;

private:
  /// Beyond these a document is not looked at.
  static constexpr std::size_t mostPrefixes = 128;
  static constexpr std::size_t longestPrefix = 64;

  struct Prefix {
    std::string text;
    XMPNamespace space;
    std::size_t depth;
  };
  std::vector<Prefix> prefixes_;
};

} // namespace searchsystem
