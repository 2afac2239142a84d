#pragma once

#include "platform/foundation/FileStatus.h"
#include "platform/metadata/FolderListing.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace searchsystem {

/// What the index knows of a folder: the names in it, and all that must be unchanged for them to
/// count. A folder with very many files has several records, the parts of one listing, each with
/// names of its own. A record may also note that a folder must be listed each time, or is gone.
///
/// On the disk it is a header, the end of the path, which begins as the path of the record before
/// it, and the names, with a check sum over everything: so a record shows by itself whether it is
/// whole.
///
/// Ownership: views the bytes of the names, not the path. Threads: any; immutable.
class FolderRecord {
public:
  /// The names of files and links in a part of a listing, beyond which another begins.
  static constexpr std::size_t bytesInPart = std::size_t{64} << 10;
  /// A folder with more of them must be listed each time.
  static constexpr std::size_t mostParts = 4096;
  /// A folder with longer names of sub-folders must be listed each time.
  static constexpr std::size_t mostBytesOfFolders = std::size_t{4} << 20;
  /// A record is smaller.
  static constexpr std::size_t mostBytes = std::size_t{5} << 20;

  enum class Kind : std::uint8_t {
    /// The names in the folder, or a part of them.
    Names,
    /// Of a folder that must be listed each time: it leads to those below it.
    PathOnly,
    /// The folder is gone.
    Gone,
  };

  /// What a record says besides path and names.
  struct Facts {
    Kind kind = Kind::Names;
    /// No part of the listing comes after this one, which holds the names of all sub-folders.
    bool isLastPart = true;
    std::uint16_t part = 0;
    /// When a query last found it true, in days since 1970.
    std::uint16_t day = 0;
    /// A number for each listing.
    std::uint32_t listing = 0;
    /// How many names it holds.
    std::uint32_t entries = 0;
    /// The folder's file system and the rights with which it was listed, in one number.
    std::uint64_t owner = 0;
    std::uint64_t inode = 0;
    FileMoment changeTime{};
  };

  /// Where its path begins in a record that has been packed.
  static constexpr std::size_t placeOfPath = 72;

  /// Appends a record with its whole path, one of `FolderPath`. Throws `std::bad_alloc`.
  static void pack(std::string &bytes, std::string_view path, const Facts &facts,
                   const FolderNames &names);

  /// Takes the first record from `rest`, and changes `path`, of the record before it or empty, into
  /// its own. None if the rest cannot begin with one; whether it is whole is not asked. Throws
  /// `std::bad_alloc`.
  [[nodiscard]] static std::optional<FolderRecord> take(std::string_view &rest, std::string &path);

  /// Appends the same record again, where it comes directly after one of `before`, which may be
  /// empty. Throws `std::bad_alloc`.
  void appendTo(std::string &bytes, std::string_view path, std::string_view before) const;

  /// Whether it is as it was packed, for the folder at `path`.
  [[nodiscard]] bool isWhole(std::string_view path) const noexcept;

  [[nodiscard]] const Facts &facts() const noexcept { return facts_; }
  [[nodiscard]] const FolderNames &names() const noexcept { return names_; }
  /// The bytes of all names.
  [[nodiscard]] std::size_t size() const noexcept { return allNames_.size(); }

private:
  FolderRecord() noexcept = default;

  Facts facts_;
  FolderNames names_;
  std::uint64_t sum_ = 0;
  /// All names in one piece.
  std::string_view allNames_;
};

/// For `FolderRecord::Facts::day`. Any thread.
[[nodiscard]] std::uint16_t today() noexcept;

} // namespace searchsystem
