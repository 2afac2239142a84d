#pragma once

#include <string>
#include <string_view>

namespace searchsystem::ssfind {

/// Whether `path` lies below `folder`, at any depth. Both are absolute and without "." or "..".
[[nodiscard]] bool isBelow(std::string_view path, std::string_view folder) noexcept;

/// The part of `path` below `folder`, without a "/" at its beginning.
[[nodiscard]] std::string_view pathBelow(std::string_view path, std::string_view folder) noexcept;

/// The folder that holds `path`; "/" for itself.
[[nodiscard]] std::string_view parentOf(std::string_view path) noexcept;

/// `folder` and `below`, with one "/" between them.
[[nodiscard]] std::string joined(std::string_view folder, std::string_view below);

/// Orders a folder right before everything below it.
[[nodiscard]] bool isBeforeInTree(std::string_view a, std::string_view b) noexcept;

} // namespace searchsystem::ssfind
