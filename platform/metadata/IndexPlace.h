#pragma once

#include "platform/foundation/FileDescriptor.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace searchsystem {

/// Where the library keeps files of its own: in a folder that only the user can read, in the user's
/// cache folder (`$XDG_CACHE_HOME`, else `~/.cache`).
///
/// Ownership: owns the paths. Threads: one at a time, unless a member says otherwise.
class IndexPlace {
public:
  /// The place that the environment named at the first call; none if it names no cache folder.
  /// Throws `std::bad_alloc`. Main thread.
  static std::optional<IndexPlace> current();

  /// The index. Beside it lie the file that a writer locks, and those that are being made.
  [[nodiscard]] const std::string &file() const noexcept { return file_; }
  [[nodiscard]] std::string lockFile() const { return folder_ + "/folders-2.lock"; }
  [[nodiscard]] std::string newFile() const { return folder_ + "/folders-2.new"; }
  [[nodiscard]] std::string partsFile() const { return folder_ + "/folders-2.parts"; }

  /// Another file in the folder.
  [[nodiscard]] std::string file(std::string_view name) const {
    return std::string(folder_).append("/").append(name);
  }

  /// What is on the disk.
  enum class Finding {
    /// No index, but one can be made.
    Nothing,
    /// A file that only the user can have written.
    Usable,
    /// A file that must not be used, but can be removed.
    Untrusted,
    /// No index can be made: the cache folder belongs to another user or is not on a local disk, or
    /// the index's name belongs to something other than a file.
    Impossible,
  };
  [[nodiscard]] Finding look() const noexcept;

  /// Makes the folder where it is missing. False if no folder owned by the user results. Throws
  /// `std::bad_alloc`.
  [[nodiscard]] bool makeFolder() const;

  /// The bytes that the index takes on the disk.
  [[nodiscard]] std::int64_t sizeOnDisk() const noexcept;

  /// Removes the index, what was left of one in the making, and `removeOldFiles`; false if
  /// something is left of it. The file that writers lock stays. Throws `std::bad_alloc`.
  bool removeFiles() const;

  /// Removes what an older version of the library left; false if something is left. Throws
  /// `std::bad_alloc`.
  bool removeOldFiles() const;

  /// Sets the user's cache folder; none restores the real one. Main thread.
  static void setCacheFolderForTesting(std::optional<std::string> cacheFolder);

private:
  explicit IndexPlace(const std::string &cacheFolder);

  std::string cacheFolder_;
  std::string folder_;
  std::string file_;
};

/// Opens a file of the library's own without waiting: none if that is a link, is no regular file,
/// belongs to another user, can be used by others, or has another link. `flags` are those of
/// open(2); with O_CREAT it is made for the user alone. Any thread.
[[nodiscard]] FileDescriptor openOwnFile(const std::string &path, int flags) noexcept;

/// Whether `bytes` more may be written to the disk of an open file: so that others are not in want,
/// a twentieth of the disk stays free, but no more than 256 MiB. Any thread.
[[nodiscard]] bool hasRoomFor(std::uint64_t bytes, int file) noexcept;

} // namespace searchsystem
