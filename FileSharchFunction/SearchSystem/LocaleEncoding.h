#pragma once

#include <cstdint>

namespace searchsystem {

/// The host's language as a number: 0 Japanese, 1 Britain, 2 English, 3 German, 4 French,
/// 5 Italian, 6 Spanish, 7 Dutch; 0 also for others and if unknown. Any thread.
[[nodiscard]] int GetCurrentLocaleID() noexcept;

/// The Core Foundation encoding in which PDF text is searched for a user of that language.
[[nodiscard]] std::uint32_t encodingForLocale(int locale) noexcept;

} // namespace searchsystem
