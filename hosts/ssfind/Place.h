#pragma once

#include "hosts/ssfind/SearchPlan.h"

#include <optional>
#include <string>
#include <string_view>

namespace searchsystem::ssfind {

/// Where the matches of a search come from: a folder, or a list of files. Refers to it.
class Place {
public:
  Place() = default;
  explicit Place(const Folder &folder) : folder_(&folder) {}
  explicit Place(const FileList &files) : files_(&files) {}

  /// Writes a match's path as the user would write it.
  void show(std::string_view path, std::string &shown) const;

  /// The path of a match below the folder, or as the list has it.
  [[nodiscard]] std::string_view below(std::string_view path) const;

  /// How many folders below the folder a match lies, itself included. None in a list.
  [[nodiscard]] std::optional<std::size_t> depthOf(std::string_view path) const;

private:
  const Folder *folder_ = nullptr;
  const FileList *files_ = nullptr;
};

} // namespace searchsystem::ssfind
