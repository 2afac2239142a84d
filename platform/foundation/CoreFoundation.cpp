#include "platform/foundation/CoreFoundation.h"

#include "platform/foundation/MainRunLoop.h"
#include "platform/foundation/NSArray.h"
#include "platform/foundation/NSDate.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/StringEncoding.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace searchsystem {

namespace {

/// The object that `make` creates, or null if memory is short.
template <class Make> auto orNull(Make make) noexcept -> decltype(make().leak()) {
  try {
    return make().leak();
  } catch (...) {
    return nullptr;
  }
}

/// The time `seconds` from now; none if that is too far away to matter.
std::optional<MainRunLoop::Clock::time_point> timeAfter(CFTimeInterval seconds) noexcept {
  constexpr double longestWait = 1e9;
  if (seconds >= longestWait)
    return std::nullopt;
  const std::chrono::duration<double> wait(seconds > 0 ? seconds : 0);
  return MainRunLoop::Clock::now() + std::chrono::duration_cast<MainRunLoop::Clock::duration>(wait);
}

} // namespace

} // namespace searchsystem

using namespace searchsystem;

const CFArrayCallBacks kCFTypeArrayCallBacks = {0};
const CFRunLoopMode kCFRunLoopDefaultMode = nullptr;

CFTypeRef CFRetain(CFTypeRef object) {
  if (object != nullptr)
    static_cast<const NSObject *>(object)->retain();
  return object;
}

void CFRelease(CFTypeRef object) {
  if (object != nullptr)
    static_cast<const NSObject *>(object)->release();
}

CFStringRef CFStringCreateWithCString(CFAllocatorRef /*allocator*/, const char *text,
                                      CFStringEncoding encoding) {
  if (text == nullptr)
    return nullptr;
  return orNull([&]() -> Ref<const NSString> {
    const std::optional<std::string> decoded = decodeText(text, encoding);
    return decoded ? NSString::create(*decoded) : nullptr;
  });
}

CFStringRef CFStringCreateWithFileSystemRepresentation(CFAllocatorRef /*allocator*/,
                                                       const char *path) {
  if (path == nullptr)
    return nullptr;
  return orNull([&] { return NSString::create(path); });
}

unsigned char CFStringGetCString(CFStringRef string, char *buffer, CFIndex size,
                                 CFStringEncoding encoding) {
  if (string == nullptr || buffer == nullptr || size <= 0)
    return 0;
  try {
    const std::optional<std::string> encoded = encodeText(string->view(), encoding);
    if (!encoded || encoded->size() >= static_cast<std::size_t>(size))
      return 0;
    *std::copy(encoded->begin(), encoded->end(), buffer) = '\0';
    return 1;
  } catch (...) {
    return 0;
  }
}

const char *CFStringGetCStringPtr(CFStringRef string, CFStringEncoding encoding) {
  if (string == nullptr || !isStoredAs(string->view(), encoding))
    return nullptr;
  return string->UTF8String();
}

CFRange CFStringFind(CFStringRef string, CFStringRef sought, CFStringCompareFlags options) {
  constexpr CFRange notFound{kCFNotFound, 0};
  if (string == nullptr || sought == nullptr)
    return notFound;
  const bool foldCase = (options & kCFCompareCaseInsensitive) != 0;
  const bool isLiteral = (options & kCFCompareNonliteral) == 0;
  try {
    const NSRange range = string->rangeOfString(
        *sought, (isLiteral ? NSLiteralSearch : 0U) | (foldCase ? NSCaseInsensitiveSearch : 0U));
    if (range.length == 0)
      return notFound;
    return {static_cast<CFIndex>(range.location), static_cast<CFIndex>(range.length)};
  } catch (...) {
    return notFound;
  }
}

CFDateRef CFDateCreate(CFAllocatorRef /*allocator*/, CFAbsoluteTime time) {
  return orNull([&] { return NSDate::dateWithTimeIntervalSinceReferenceDate(time); });
}

CFArrayRef CFArrayCreate(CFAllocatorRef /*allocator*/, const void **values, CFIndex count,
                         const CFArrayCallBacks * /*callBacks*/) {
  if (count < 0 || (values == nullptr && count > 0))
    return nullptr;
  return orNull([&]() -> Ref<const NSArray> {
    std::vector<Ref<const NSObject>> elements;
    elements.reserve(static_cast<std::size_t>(count));
    for (CFIndex i = 0; i < count; ++i) {
      if (values[i] == nullptr)
        return nullptr;
      elements.emplace_back(static_cast<const NSObject *>(values[i]));
    }
    return NSArray::create(std::move(elements));
  });
}

CFRunLoopRef CFRunLoopGetMain(void) {
  return reinterpret_cast<CFRunLoopRef>(&MainRunLoop::shared());
}

void CFRunLoopRun(void) { MainRunLoop::shared().run(std::nullopt, false); }

SInt32 CFRunLoopRunInMode(CFRunLoopMode /*mode*/, CFTimeInterval seconds,
                          unsigned char returnAfterSourceHandled) {
  return MainRunLoop::shared().run(timeAfter(seconds), returnAfterSourceHandled != 0);
}

void CFRunLoopStop(CFRunLoopRef loop) {
  if (loop != nullptr)
    reinterpret_cast<MainRunLoop *>(loop)->stop();
}
