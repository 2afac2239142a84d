#include "platform/foundation/NSWorkspace.h"

#include "platform/foundation/PathComponents.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace searchsystem {

namespace {

constexpr std::array<std::string_view, 14> packageExtensions{
    "app",         "bundle",    "framework", "plugin", "kext", "prefPane",      "mdimporter",
    "qlgenerator", "component", "rtfd",      "pkg",    "mpkg", "photoslibrary", "aplibrary"};

} // namespace

bool hasPackageExtension(std::string_view name) noexcept {
  const std::string_view extension = extensionOfName(name);
  return std::ranges::any_of(packageExtensions, [&](std::string_view known) {
    return equalIgnoringASCIICase(extension, known);
  });
}

bool isFilePackage(const FileItem &folder) {
  return !extensionOfName(folder.name()).empty() &&
         (hasPackageExtension(folder.name()) || folder.holds("/Contents/Info.plist"));
}

} // namespace searchsystem
