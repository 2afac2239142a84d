#include "hosts/ssfind/Terminal.h"

#include <cstdlib>
#include <string_view>
#include <unistd.h>

namespace searchsystem::ssfind {

bool isTerminal(int descriptor) noexcept { return isatty(descriptor) == 1; }

bool isCapableTerminal(int descriptor) noexcept {
  const char *const kind = std::getenv("TERM");
  return isTerminal(descriptor) && kind != nullptr && std::string_view(kind) != "dumb";
}

bool isColorUnwanted() noexcept {
  const char *const value = std::getenv("NO_COLOR");
  return value != nullptr && *value != '\0';
}

} // namespace searchsystem::ssfind
