#pragma once

#include "readers/photographs/PhotographDate.h"

#include <string_view>

namespace searchsystem {

/// Takes what a photograph says about itself.
class PhotographSink {
public:
  PhotographSink() = default;
  PhotographSink(const PhotographSink &) = delete;
  PhotographSink &operator=(const PhotographSink &) = delete;
  virtual ~PhotographSink() = default;

  /// A text that is not empty, as the texts of documents are: UTF-8 after compatibility
  /// normalisation, one blank for any white space, no soft hyphens, U+0001 for a hyphen that ends a
  /// line. `name` says where it stands, in UTF-8: `Exif ImageDescription`, `IPTC Keywords`, `XMP
  /// dc:title`. Called once for each different text of a name, in the order of the file. False: no
  /// more is wanted.
  virtual bool takeField(std::string_view name, std::string_view text) = 0;
  /// Called at most once, behind the fields.
  virtual void takeDate(const PhotographDate &date) = 0;
  /// Of the camera. One of them may be empty. Called at most once, behind the fields.
  virtual void takeCamera(std::string_view maker, std::string_view model) = 0;
};

} // namespace searchsystem
