#pragma once

#include "platform/foundation/FileItem.h"

namespace searchsystem {

/// Whether a folder is a package, shown to the user as one file: it has a known package extension,
/// or any extension and holds `Contents/Info.plist`. Throws `std::bad_alloc`. Any thread.
[[nodiscard]] bool isFilePackage(const FileItem &folder);

/// Whether a folder of that name is a package whatever its contents. Any thread.
[[nodiscard]] bool hasPackageExtension(std::string_view name) noexcept;

} // namespace searchsystem
