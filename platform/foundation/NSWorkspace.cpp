#include "platform/foundation/NSWorkspace.h"

#include "platform/foundation/PathComponents.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace {

constexpr std::array<std::string_view, 14> packageExtensions{
    "app",         "bundle",    "framework", "plugin", "kext", "prefPane",      "mdimporter",
    "qlgenerator", "component", "rtfd",      "pkg",    "mpkg", "photoslibrary", "aplibrary"};

} // namespace

bool isFilePackage(const FileItem &folder) {
  const std::string_view extension = extensionOfName(folder.name());
  if (extension.empty())
    return false;
  const auto isSame = [&](std::string_view known) {
    return equalIgnoringASCIICase(extension, known);
  };
  return std::any_of(packageExtensions.begin(), packageExtensions.end(), isSame) ||
         folder.holds("/Contents/Info.plist");
}
