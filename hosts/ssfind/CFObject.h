#pragma once

#include "platform/foundation/CoreFoundation.h"

#include <memory>
#include <new>
#include <type_traits>

namespace searchsystem::ssfind {

struct CFReleaser {
  void operator()(CFTypeRef object) const noexcept { CFRelease(object); }
};

/// Owns one reference to an object of the library.
template <class Reference>
using CFObject = std::unique_ptr<std::remove_pointer_t<Reference>, CFReleaser>;

/// Takes the result of a function with Create in its name; throws if that is null, which means that
/// memory is short.
template <class Reference> [[nodiscard]] CFObject<Reference> own(Reference created) {
  if (created == nullptr)
    throw std::bad_alloc();
  return CFObject<Reference>(created);
}

} // namespace searchsystem::ssfind
