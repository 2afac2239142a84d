#include "readers/photographs/XMPProperties.h"

#include <algorithm>
#include <array>
#include <utility>

namespace searchsystem {

namespace {

using Namespace = XMPNamespace;
using Kind = XMPProperty::Kind;

constexpr std::array<std::pair<std::string_view, Namespace>, 22> namespaces{{
    {"http://www.w3.org/1999/02/22-rdf-syntax-ns#", Namespace::rdf},
    {"http://purl.org/dc/elements/1.1/", Namespace::dc},
    {"http://ns.adobe.com/xap/1.0/", Namespace::xmp},
    {"http://ns.adobe.com/xmp/note/", Namespace::xmpNote},
    {"http://ns.adobe.com/photoshop/1.0/", Namespace::photoshop},
    {"http://ns.adobe.com/tiff/1.0/", Namespace::tiff},
    {"http://ns.adobe.com/exif/1.0/", Namespace::exif},
    {"http://cipa.jp/exif/1.0/", Namespace::exifEX},
    {"http://ns.adobe.com/exif/1.0/aux/", Namespace::aux},
    {"http://iptc.org/std/Iptc4xmpCore/1.0/xmlns/", Namespace::iptcCore},
    {"http://iptc.org/std/Iptc4xmpExt/2008-02-29/", Namespace::iptcExtension},
    {"http://ns.adobe.com/lightroom/1.0/", Namespace::lightroom},
    {"http://www.digikam.org/ns/1.0/", Namespace::digiKam},
    {"http://ns.microsoft.com/photo/1.0/", Namespace::microsoftPhoto},
    {"http://ns.microsoft.com/photo/1.0", Namespace::microsoftPhoto},
    {"http://ns.microsoft.com/photo/1.2/t/Region#", Namespace::microsoftRegion},
    {"http://ns.iview-multimedia.com/mediapro/1.0/", Namespace::mediaPro},
    {"http://ns.microsoft.com/expressionmedia/1.0/", Namespace::expressionMedia},
    {"http://ns.acdsee.com/iptc/1.0/", Namespace::acdsee},
    {"http://ns.acdsee.com/regions/", Namespace::acdseeRegions},
    {"http://www.metadataworkinggroup.com/schemas/regions/", Namespace::regions},
    {"http://www.metadataworkinggroup.com/schemas/keywords/", Namespace::keywords},
}};

constexpr std::array<XMPProperty, 38> properties{{
    {Namespace::dc, "title", Kind::text, "dc:title"},
    {Namespace::dc, "description", Kind::text, "dc:description"},
    {Namespace::dc, "subject", Kind::text, "dc:subject"},
    {Namespace::dc, "creator", Kind::text, "dc:creator"},
    {Namespace::dc, "rights", Kind::text, "dc:rights"},
    {Namespace::photoshop, "Headline", Kind::text, "photoshop:Headline"},
    {Namespace::photoshop, "City", Kind::text, "photoshop:City"},
    {Namespace::photoshop, "Country", Kind::text, "photoshop:Country"},
    {Namespace::iptcCore, "Location", Kind::text, "Iptc4xmpCore:Location"},
    {Namespace::tiff, "ImageDescription", Kind::text, "tiff:ImageDescription"},
    {Namespace::tiff, "Make", Kind::maker, "tiff:Make"},
    {Namespace::tiff, "Model", Kind::model, "tiff:Model"},
    {Namespace::tiff, "Artist", Kind::text, "tiff:Artist"},
    {Namespace::tiff, "Copyright", Kind::text, "tiff:Copyright"},
    {Namespace::exif, "UserComment", Kind::text, "exif:UserComment"},
    {Namespace::exifEX, "LensMake", Kind::text, "exifEX:LensMake"},
    {Namespace::exifEX, "LensModel", Kind::text, "exifEX:LensModel"},
    {Namespace::aux, "Lens", Kind::text, "aux:Lens"},
    {Namespace::lightroom, "hierarchicalSubject", Kind::text, "lr:hierarchicalSubject"},
    {Namespace::digiKam, "TagsList", Kind::text, "digiKam:TagsList"},
    {Namespace::microsoftPhoto, "LastKeywordXMP", Kind::text, "MicrosoftPhoto:LastKeywordXMP"},
    {Namespace::microsoftPhoto, "LastKeywordIPTC", Kind::text, "MicrosoftPhoto:LastKeywordIPTC"},
    {Namespace::mediaPro, "CatalogSets", Kind::text, "mediapro:CatalogSets"},
    {Namespace::mediaPro, "People", Kind::text, "mediapro:People"},
    {Namespace::expressionMedia, "CatalogSets", Kind::text, "expressionmedia:CatalogSets"},
    {Namespace::expressionMedia, "People", Kind::text, "expressionmedia:People"},
    {Namespace::acdsee, "keywords", Kind::text, "acdsee:keywords"},
    {Namespace::acdsee, "categories", Kind::markup, "acdsee:categories"},
    {Namespace::iptcExtension, "PersonInImage", Kind::text, "Iptc4xmpExt:PersonInImage"},
    {Namespace::microsoftRegion, "PersonDisplayName", Kind::text, "MPReg:PersonDisplayName", true},
    {Namespace::acdseeRegions, "Name", Kind::text, "acdsee-rs:Name", true},
    {Namespace::regions, "Name", Kind::text, "mwg-rs:Name", true},
    {Namespace::regions, "Description", Kind::text, "mwg-rs:Description", true},
    {Namespace::keywords, "Keyword", Kind::text, "mwg-kw:Keyword", true},
    {Namespace::exif, "DateTimeOriginal", Kind::exifOriginal, "exif:DateTimeOriginal"},
    {Namespace::photoshop, "DateCreated", Kind::photoshopCreated, "photoshop:DateCreated"},
    {Namespace::xmp, "CreateDate", Kind::created, "xmp:CreateDate"},
    {Namespace::xmpNote, "HasExtendedXMP", Kind::extension, "xmpNote:HasExtendedXMP"},
}};

} // namespace

XMPNamespace xmpNamespaceOf(std::string_view uri) noexcept {
  const auto *const found = std::find_if(namespaces.begin(), namespaces.end(),
                                         [&](const auto &one) { return one.first == uri; });
  return found == namespaces.end() ? Namespace::other : found->second;
}

const XMPProperty *xmpPropertyOf(XMPNamespace space, std::string_view localName) noexcept {
  const auto *const found =
      std::find_if(properties.begin(), properties.end(), [&](const XMPProperty &one) {
        return one.space == space && one.localName == localName;
      });
  return found == properties.end() ? nullptr : found;
}

} // namespace searchsystem
