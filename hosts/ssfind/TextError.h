#pragma once

#include <cstddef>
#include <string>

namespace searchsystem::ssfind {

/// An error in a text that the user typed, and its byte.
struct TextError {
  std::string message;
  std::size_t column;
};

} // namespace searchsystem::ssfind
