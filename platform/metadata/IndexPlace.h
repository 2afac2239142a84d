#pragma once

#include <cstdint>
#include <optional>
#include <string>

/// Where the index is kept: a file in a folder of its own within the user's cache folder
/// (`$XDG_CACHE_HOME`, else `~/.cache`), which only the user can read.
///
/// Ownership: owns the paths. Threads: one at a time, unless said otherwise.
class IndexPlace {
public:
  /// The place that the environment names, which is read when it is first asked for; none where it
  /// names no cache folder. Throws `std::bad_alloc`. Main thread.
  static std::optional<IndexPlace> current();

  [[nodiscard]] const std::string &file() const noexcept { return file_; }

  /// What the disk holds there.
  enum class Finding {
    /// There is no index, and there can be one.
    Nothing,
    /// A file that nobody else can have written.
    Usable,
    /// A file that may not be used, but can be removed.
    Untrusted,
    /// No index can be there: the cache folder belongs to somebody else or is not on a local disk,
    /// or what has the index's name is no file.
    Impossible,
  };
  [[nodiscard]] Finding look() const noexcept;

  /// Makes the folder where it is missing; false when there is none then that is the user's own.
  /// Throws `std::bad_alloc`.
  [[nodiscard]] bool makeFolder() const;

  /// How many bytes the index takes on the disk. Throws `std::bad_alloc`.
  [[nodiscard]] std::int64_t sizeOnDisk() const;

  /// Removes the index; false when something is left of it. Throws `std::bad_alloc`.
  bool removeFiles() const;

  /// Makes `cacheFolder` the user's cache folder; none restores the real one. Main thread.
  static void setCacheFolderForTesting(std::optional<std::string> cacheFolder);

private:
  explicit IndexPlace(const std::string &cacheFolder);

  [[nodiscard]] bool isCacheFolderOurs() const noexcept;

  std::string cacheFolder_;
  std::string folder_;
  std::string file_;
};
