#pragma once

#include "platform/foundation/ASCIIText.h"

#include <algorithm>
#include <string_view>

namespace searchsystem {

/// The parts of a POSIX path, as views into it. The disk is never read.

/// The last component, trailing slashes left out: "b" of "/a/b/", "/" of "/", "" of "".
[[nodiscard]] std::string_view lastPathComponent(std::string_view path) noexcept;

/// The part before the last component, without a final slash: "/a" of "/a/b/", "/" of "/a",
/// "" of "a".
[[nodiscard]] std::string_view pathWithoutLastComponent(std::string_view path) noexcept;

/// The part after the last dot of a path's last component. Empty if there is no
/// dot, or only one that begins the component (".profile") or ends it.
[[nodiscard]] inline std::string_view extensionOfName(std::string_view name) noexcept {
  const std::size_t dot = name.rfind('.');
  if (dot == std::string_view::npos || dot == 0)
    return {};
  return name.substr(dot + 1);
}

/// The path without trailing slashes, so that a slash and a name can follow: "" for "/".
[[nodiscard]] std::string_view pathWithoutTrailingSlashes(std::string_view path) noexcept;

/// Whether two ASCII texts are equal but for the case of their letters.
[[nodiscard]] inline bool equalIgnoringASCIICase(std::string_view a, std::string_view b) noexcept {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return lowerASCII(x) == lowerASCII(y); });
}

} // namespace searchsystem
