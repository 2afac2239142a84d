#include "platform/foundation/ResolvedPath.h"

#include <cstdlib>
#include <memory>

std::string resolvedPath(std::string path) {
  const std::unique_ptr<char, decltype(&std::free)> resolved(realpath(path.c_str(), nullptr),
                                                             &std::free);
  return resolved ? resolved.get() : std::move(path);
}
