#include "readers/photographs/XMPPacket.h"

#include "readers/photographs/CharacterSets.h"
#include "readers/photographs/XMPNames.h"
#include "readers/photographs/XMPProperties.h"

#include <expat.h>
#include <sys/auxv.h>

#include <bit>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

namespace searchsystem {

namespace {

struct FreeParser {
  void operator()(XML_ParserStruct *parser) const noexcept { XML_ParserFree(parser); }
};
using Parser = std::unique_ptr<XML_ParserStruct, FreeParser>;

/// A number that no file can know, so that none can be made to fill one chain of the parser's hash
/// tables. It comes from the program's start: nothing is asked of the system, which a sealed
/// process may not.
unsigned long hashSalt() noexcept {
  unsigned long salt = 0;
  if (const auto *const random = std::bit_cast<const char *>(getauxval(AT_RANDOM)))
    std::memcpy(&salt, random, sizeof salt);
  // With 0 the parser would choose one itself.
  return salt | 1;
}

std::string withoutMarkup(std::string_view text) {
  std::string result;
  bool isMarkup = false;
  for (const char c : text) {
    isMarkup = c == '<' || (isMarkup && c != '>');
    result += isMarkup || c == '>' ? ' ' : c;
  }
  return result;
}

/// Takes the events of the parser.
class PacketReader {
public:
  PacketReader(XML_Parser parser, PhotographReading &reading, XMPPlace place)
      : parser_(parser), reading_(reading), place_(place) {
    XML_SetUserData(parser, this);
    XML_SetElementHandler(parser, &PacketReader::onBegin, &PacketReader::onEnd);
    XML_SetCharacterDataHandler(parser, &PacketReader::onText);
    XML_SetStartDoctypeDeclHandler(parser, &PacketReader::onDocumentType);
  }

  [[nodiscard]] bool isOutOfMemory() const noexcept { return isOutOfMemory_; }
  [[nodiscard]] std::string takeExtension() noexcept { return std::move(extension_); }

private:
  static constexpr std::size_t mostDepth = 128;

  struct Element {
    /// To which its text belongs, if any.
    const XMPProperty *property = nullptr;
    bool isRDF = false;
    /// A node whose attributes and elements are properties of the photograph.
    bool isTop = false;
    bool hasElements = false;
  };

  /// Nothing may be thrown through the parser.
  template <class Action> static void run(void *data, const Action &action) noexcept {
    auto &reader = *static_cast<PacketReader *>(data);
    // The end of an empty element may still be told.
    if (reader.isStopped_)
      return;
    try {
      action(reader);
    } catch (const std::bad_alloc &) {
      reader.isOutOfMemory_ = true;
      reader.stop();
    }
  }

  static void onBegin(void *data, const XML_Char *name, const XML_Char **attributes) noexcept {
    run(data, [&](PacketReader &reader) { reader.begin(name, attributes); });
  }
  static void onEnd(void *data, const XML_Char *) noexcept {
    run(data, [](PacketReader &reader) { reader.end(); });
  }
  static void onText(void *data, const XML_Char *text, int size) noexcept {
    run(data, [&](PacketReader &reader) {
      reader.addText({text, static_cast<std::size_t>(size)});
    });
  }
  static void onDocumentType(void *data, const XML_Char *, const XML_Char *, const XML_Char *,
                             int) noexcept {
    run(data, [](PacketReader &reader) { reader.stop(); });
  }

  void stop() noexcept {
    isStopped_ = true;
    XML_StopParser(parser_, XML_FALSE);
  }

  void begin(const char *qualified, const char *const *attributes) {
    if (elements_.size() >= mostDepth || reading_.budget.isSpent())
      return stop();
    names_.enter(attributes, elements_.size());
    const XMPName name = names_.nameOf(qualified);
    const Element parent = elements_.empty() ? Element() : elements_.back();
    Element element;
    element.isRDF = name.space == XMPNamespace::rdf && name.local == "RDF";
    element.isTop = parent.isRDF && name.space == XMPNamespace::rdf && name.local == "Description";
    element.property = propertyOf(name, parent.isTop);
    // The items of a list, and what they are wrapped in.
    if (element.property == nullptr && name.space == XMPNamespace::rdf)
      element.property = parent.property;
    if (!elements_.empty())
      elements_.back().hasElements = true;
    elements_.push_back(element);
    text_.clear();
    for (; attributes[0] != nullptr; attributes += 2)
      if (const XMPProperty *const property =
              propertyOf(names_.nameOf(attributes[0]), element.isTop))
        handOn(*property, attributes[1]);
  }

  void end() {
    const Element element = elements_.back();
    elements_.pop_back();
    names_.leave(elements_.size());
    if (element.property != nullptr && !element.hasElements)
      handOn(*element.property, text_);
    text_.clear();
  }

  void addText(std::string_view text) {
    if (!elements_.empty() && elements_.back().property != nullptr &&
        text.size() <= ReadBudget::longestText - text_.size())
      text_ += text;
  }

  [[nodiscard]] static const XMPProperty *propertyOf(const XMPName &name, bool isAtTop) noexcept {
    const XMPProperty *const property =
        name.space == XMPNamespace::other ? nullptr : xmpPropertyOf(name.space, name.local);
    return property != nullptr && (isAtTop || property->isAnywhere) ? property : nullptr;
  }

  void handOn(const XMPProperty &property, std::string_view text) {
    const bool isBeside = place_ == XMPPlace::sidecar;
    using Kind = XMPProperty::Kind;
    switch (property.kind) {
    case Kind::exifOriginal:
      return addDate(isBeside ? DateSource::sidecarOriginal : DateSource::xmpOriginal, text);
    case Kind::photoshopCreated:
      return addDate(
          isBeside ? DateSource::sidecarPhotoshopCreated : DateSource::xmpPhotoshopCreated, text);
    case Kind::created:
      return addDate(isBeside ? DateSource::sidecarCreated : DateSource::xmpCreated, text);
    case Kind::extension:
      extension_ = text;
      return;
    case Kind::markup:
      return addField(property, withoutMarkup(text));
    default:
      return addField(property, text);
    }
  }

  void addDate(DateSource source, std::string_view text) {
    reading_.fields.addDate(source, parsePhotographDate(text));
  }

  void addField(const XMPProperty &property, std::string_view text) {
    std::string name(place_ == XMPPlace::sidecar ? "Sidecar " : "XMP ");
    name += property.name;
    const FieldRole role = property.kind == XMPProperty::Kind::maker   ? FieldRole::maker
                           : property.kind == XMPProperty::Kind::model ? FieldRole::model
                                                                       : FieldRole::other;
    reading_.fields.addSecondary(name, text, role);
  }

  XML_Parser parser_;
  PhotographReading &reading_;
  const XMPPlace place_;
  XMPNames names_;
  std::vector<Element> elements_;
  /// Of the innermost element.
  std::string text_;
  std::string extension_;
  bool isStopped_ = false;
  bool isOutOfMemory_ = false;
};

bool isUtf16(std::string_view packet) noexcept {
  return packet.starts_with("\xFF\xFE") || packet.starts_with("\xFE\xFF") ||
         packet.starts_with(std::string_view("<\0", 2)) ||
         packet.starts_with(std::string_view("\0<", 2));
}

constexpr bool isPadding(char c) noexcept {
  return c == ' ' || c == '\n' || c == '\r' || c == '\t' || c == '\0';
}

/// Writers pad packets.
std::string_view trimmed(std::string_view packet) noexcept {
  while (!packet.empty() && isPadding(packet.back()))
    packet.remove_suffix(1);
  while (!packet.empty() && isPadding(packet.front()))
    packet.remove_prefix(1);
  return packet;
}

} // namespace

std::string readXMPPacket(std::string_view packet, PhotographReading &reading, XMPPlace place) {
  if (packet.empty() || !reading.budget.spendDirectory())
    return {};
  packet = packet.substr(0, ReadBudget::longestPacket);
  const bool isInPairs = isUtf16(packet);
  std::string repaired;
  if (!isInPairs) {
    packet = trimmed(packet);
    // Some programs put Latin-1 into it.
    if (!isUtf8(packet))
      packet = repaired = repairedUtf8(packet);
  }
  const Parser parser(XML_ParserCreate(isInPairs ? nullptr : "UTF-8"));
  if (parser == nullptr)
    throw std::bad_alloc();
  XML_SetHashSalt(parser.get(), hashSalt());
  PacketReader reader(parser.get(), reading, place);
  // At once: a token that grows from call to call is parsed again in each.
  XML_Parse(parser.get(), packet.data(), static_cast<int>(packet.size()), XML_TRUE);
  if (reader.isOutOfMemory() || XML_GetErrorCode(parser.get()) == XML_ERROR_NO_MEMORY)
    throw std::bad_alloc();
  return reader.takeExtension();
}

} // namespace searchsystem
