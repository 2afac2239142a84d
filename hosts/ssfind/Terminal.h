#pragma once

namespace searchsystem::ssfind {

/// Whether the descriptor is a terminal.
[[nodiscard]] bool isTerminal(int descriptor) noexcept;

/// Whether that terminal has colours and can clear a line.
[[nodiscard]] bool isCapableTerminal(int descriptor) noexcept;

/// Whether the user's environment asks for output without colours (https://no-color.org).
[[nodiscard]] bool isColorUnwanted() noexcept;

} // namespace searchsystem::ssfind
