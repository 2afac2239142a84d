#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace searchsystem {

/// What a piece of text needs besides being put behind the one before it.
struct TextTraits {
  /// A part of it may belong to the character before it, or to the one behind it.
  bool mayCompose = false;
  bool isRightToLeft = false;
  bool hasSoftHyphen = false;
};

/// Text in the form in which it is compared: compatibility normalisation (NFKC), all white space as
/// blanks, without control characters and those that only direct the layout. Soft hyphens stay,
/// since the end of a line decides about them. Marks above the thirtieth of a character are left
/// out. The text need not be valid UTF-8; the result is.
[[nodiscard]] std::string normalised(std::string_view text, TextTraits &traits);

/// The mark that an accent of its own (´) stands for on a letter; 0 if it is none.
[[nodiscard]] char32_t combiningMarkOf(char32_t accent) noexcept;

/// Ideographs and kana, which are written without blanks between words.
[[nodiscard]] bool isWrittenWithoutBlanks(char32_t character) noexcept;

} // namespace searchsystem
