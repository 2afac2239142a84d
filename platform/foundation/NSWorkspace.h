#pragma once

#include "platform/foundation/FileItem.h"

/// Whether a folder is a package, shown to the user as one file: its extension is that of a known
/// kind of package, or it has an extension and holds `Contents/Info.plist`.
/// Throws `std::bad_alloc`. Any thread.
[[nodiscard]] bool isFilePackage(const FileItem &folder);

/// Whether a folder of that name is a package whatever it holds. Any thread.
[[nodiscard]] bool hasPackageExtension(std::string_view name) noexcept;
