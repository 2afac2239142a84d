#pragma once

#include <cstdint>
#include <string_view>

namespace searchsystem {

/// The namespaces of the properties that are looked at, and `other` for all others.
enum class XMPNamespace : std::uint8_t {
  rdf,
  dc,
  xmp,
  xmpNote,
  photoshop,
  tiff,
  exif,
  exifEX,
  aux,
  iptcCore,
  iptcExtension,
  lightroom,
  digiKam,
  microsoftPhoto,
  microsoftRegion,
  mediaPro,
  expressionMedia,
  acdsee,
  acdseeRegions,
  regions,
  keywords,
  other,
};

[[nodiscard]] XMPNamespace xmpNamespaceOf(std::string_view uri) noexcept;

struct XMPProperty {
  enum class Kind : std::uint8_t {
    text,
    maker,
    model,
    /// Elements of their own, written as text.
    markup,
    exifOriginal,
    photoshopCreated,
    created,
    /// By which a JPEG file says which of its segments continue the packet.
    extension,
  };

  XMPNamespace space;
  std::string_view localName;
  Kind kind;
  /// With its customary prefix.
  std::string_view name;
  /// It stands in structures. Others count at the top only, since a packet may hold the packets of
  /// other files.
  bool isAnywhere = false;
};

/// Null if nobody looks at it.
[[nodiscard]] const XMPProperty *xmpPropertyOf(XMPNamespace space,
                                               std::string_view localName) noexcept;

} // namespace searchsystem
