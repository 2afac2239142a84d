#pragma once

#include "hosts/ssfind/Options.h"
#include "hosts/ssfind/StandardError.h"

#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace searchsystem::ssfind {

/// A folder to search: its resolved absolute path for the library, and the path as typed.
struct Folder {
  std::string path;
  std::string shown;
};

/// A folder, and the other file systems mounted below it, where the library's search stops.
struct FolderSearch {
  Folder folder;
  /// Mounts to search too.
  std::vector<Folder> mounts;
  /// Mounts not to search.
  std::vector<Folder> skippedMounts;
};

/// The files of a list, each once.
class FileList {
public:
  /// `path` is absolute, with all links but the last component resolved.
  void add(std::string path, std::string_view shown);

  /// In the order of the list; valid while this object lives.
  [[nodiscard]] const std::vector<std::string_view> &paths() const noexcept { return paths_; }

  /// How the list writes a path that is in it.
  [[nodiscard]] std::string_view shown(std::string_view path) const;

private:
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const noexcept {
      return std::hash<std::string_view>()(text);
    }
  };

  std::unordered_map<std::string, std::string, Hash, std::equal_to<>> shown_;
  std::vector<std::string_view> paths_;
};

/// The folders and files to search, in this order.
struct SearchPlan {
  std::vector<FolderSearch> folders;
  FileList files;
  /// The folders in the list.
  std::vector<FolderSearch> listedFolders;
  /// Whether two searches of the plan may meet the same file.
  bool hasOverlap = false;
  /// Whether a folder or the list could not be read; it has been reported.
  bool hasFailures = false;
};

/// Examines the folders and the list that the options name. Leaves out folders that an earlier
/// search covers.
[[nodiscard]] SearchPlan planSearch(const Options &options, StandardError &errors);

} // namespace searchsystem::ssfind
