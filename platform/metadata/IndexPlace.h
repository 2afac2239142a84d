#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace searchsystem {

/// Where the index is stored: a file in its own folder, which only the user can read, in the user's
/// cache folder (`$XDG_CACHE_HOME`, else `~/.cache`).
///
/// Ownership: owns the paths. Threads: one at a time, unless a member says otherwise.
class IndexPlace {
public:
  /// The place that the environment named at the first call; none if it names no cache folder.
  /// Throws `std::bad_alloc`. Main thread.
  static std::optional<IndexPlace> current();

  [[nodiscard]] const std::string &file() const noexcept { return file_; }

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

  /// The bytes that the index takes on the disk. Throws `std::bad_alloc`.
  [[nodiscard]] std::int64_t sizeOnDisk() const;

  /// Removes the index; false if something is left of it. Throws `std::bad_alloc`.
  bool removeFiles() const;

  /// Sets the user's cache folder; none restores the real one. Main thread.
  static void setCacheFolderForTesting(std::optional<std::string> cacheFolder);

private:
  explicit IndexPlace(const std::string &cacheFolder);

  std::string cacheFolder_;
  std::string folder_;
  std::string file_;
};

} // namespace searchsystem
