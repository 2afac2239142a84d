#include "platform/foundation/ResolvedPath.h"

#include "platform/foundation/SystemCalls.h"

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <new>

namespace searchsystem {

std::optional<std::string> resolvedPath(const std::string &path) {
  const std::unique_ptr<char, decltype(&std::free)> resolved(
      uninterrupted(&SystemCalls::resolve, path.c_str()), &std::free);
  if (!resolved && errno == ENOMEM)
    throw std::bad_alloc();
  return resolved ? std::optional<std::string>(resolved.get()) : std::nullopt;
}

} // namespace searchsystem
