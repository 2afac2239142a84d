#pragma once

#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/NSString.h"
#include "readers/ReadResult.h"

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

/// A photograph, with the XMP file beside it if there is one.
struct OpenPhotograph {
  FileDescriptor photograph, sidecar;
};

} // namespace searchsystem
