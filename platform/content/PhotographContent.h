#pragma once

#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/NSString.h"
#include "readers/ReadResult.h"

#include <cstdint>
#include <optional>
#include <string>

namespace searchsystem {

/// What is asked about photographs.
struct PhotographQuestion {
  /// What is looked for in their fields; null for nothing.
  const NSString *keyword = nullptr;
  bool isDistinct = false;
  bool wantsDate = false;
};

/// What a deep reader says of a photograph.
struct PhotographContent {
  /// Whether the keyword occurs in one of its fields.
  bool holds = false;
  /// When it was taken, by the camera's clock as local time; in seconds since 2001-01-01 00:00 UTC.
  std::optional<double> date;
  /// Of the camera, in UTF-8 as far as the reader is honest.
  std::string maker, model;
  /// Why not all was read.
  UnreadReason reason = UnreadReason::none;
};

/// A file that is open for reading, or none.
struct OpenFile {
  FileDescriptor descriptor;
  std::uint64_t size = 0;

  explicit operator bool() const noexcept { return static_cast<bool>(descriptor); }
};

/// A photograph that is to be read.
struct PhotographToRead {
  const NSString *path = nullptr;
  /// Where it is open already. Else it is opened when its turn comes.
  OpenFile file = {};
  /// False where its folder is known to hold no XMP file.
  bool mayHaveSidecar = true;
};

/// A photograph, with the XMP file beside it if there is one.
struct OpenPhotograph {
  OpenFile photograph, sidecar;
};

} // namespace searchsystem
