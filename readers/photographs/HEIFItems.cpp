#include "readers/photographs/HEIFItems.h"

#include "readers/photographs/Boxes.h"
#include "readers/photographs/ByteNumbers.h"
#include "readers/photographs/TIFFBlock.h"
#include "readers/photographs/XMPPacket.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

namespace searchsystem {

namespace {

/// Takes numbers from the content of a box that has a version.
class BoxFields {
public:
  explicit BoxFields(const ByteRange &content) : content_(content) {
    version_ = take(1);
    position_ = 4;
  }

  [[nodiscard]] std::uint64_t version() const noexcept { return version_; }
  /// 0 behind the end.
  [[nodiscard]] std::uint64_t take(std::size_t size) {
    const std::uint64_t number = bigNumber(content_.at(position_, size), size);
    position_ += size;
    return number;
  }
  void skip(std::uint64_t size) noexcept { position_ += size; }
  [[nodiscard]] bool isAtEnd() const noexcept { return position_ >= content_.size(); }
  [[nodiscard]] ByteRange rest() const noexcept { return content_.from(position_); }

private:
  const ByteRange content_;
  std::uint64_t position_ = 0;
  std::uint64_t version_ = 0;
};

struct Item {
  std::uint64_t identifier;
  bool isExif;
  /// By its reference to the primary item.
  bool describesPrimary = false;
};

class ItemReader {
public:
  ItemReader(const ByteRange &file, PhotographReading &reading) : file_(file), reading_(reading) {}

  void read(const ByteRange &meta) {
    // The box has a version itself.
    std::optional<ByteRange> references;
    std::optional<ByteRange> locations;
    Boxes boxes(meta.from(4));
    while (const auto box = boxes.next()) {
      if (box->type == "pitm")
        readPrimary(box->content);
      else if (box->type == "iinf")
        readInfos(box->content);
      else if (box->type == "iref")
        references = box->content;
      else if (box->type == "iloc")
        locations = box->content;
      else if (box->type == "idat")
        data_ = box->content;
    }
    if (items_.empty() || !locations)
      return;
    if (references)
      readReferences(*references);
    const bool isReferred = std::any_of(items_.begin(), items_.end(),
                                        [](const Item &item) { return item.describesPrimary; });
    // Items that describe other images of the file do not count.
    if (isReferred)
      std::erase_if(items_, [](const Item &item) { return !item.describesPrimary; });
    readLocations(*locations);
  }

private:
  static constexpr std::size_t mostItems = 64;

  void readPrimary(const ByteRange &content) {
    BoxFields fields(content);
    primary_ = fields.take(fields.version() == 0 ? 2 : 4);
  }

  void readInfos(const ByteRange &content) {
    BoxFields fields(content);
    fields.skip(fields.version() == 0 ? 2 : 4);
    Boxes infos(fields.rest());
    while (const auto info = infos.next())
      if (info->type == "infe" && items_.size() < mostItems)
        readInfo(info->content);
  }

  void readInfo(const ByteRange &content) {
    BoxFields fields(content);
    if (fields.version() < 2)
      return;
    const std::uint64_t identifier = fields.take(fields.version() == 2 ? 2 : 4);
    fields.skip(2);
    const std::string rest = fields.rest().read(512);
    const std::string_view type = std::string_view(rest).substr(0, 4);
    if (type == "Exif")
      items_.push_back({identifier, true});
    else if (type == "mime" && mimeType(rest).starts_with("application/rdf+xml"))
      items_.push_back({identifier, false});
  }

  /// Behind the kind and the name, which a NUL ends.
  static std::string_view mimeType(std::string_view rest) noexcept {
    const std::size_t end = rest.find('\0', 4);
    return end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
  }

  void readReferences(const ByteRange &content) {
    BoxFields fields(content);
    const std::size_t identifierSize = fields.version() == 0 ? 2 : 4;
    Boxes references(fields.rest());
    while (const auto reference = references.next()) {
      if (reference->type != "cdsc")
        continue;
      const ByteRange &bytes = reference->content;
      const auto numberAt = [&](std::uint64_t at, std::size_t size) {
        return bigNumber(bytes.at(at, size), size);
      };
      const std::uint64_t from = numberAt(0, identifierSize);
      const std::uint64_t count = numberAt(identifierSize, 2);
      for (std::uint64_t i = 0; i < count && reading_.budget.spendEntry(); ++i)
        if (numberAt(identifierSize * (i + 1) + 2, identifierSize) == primary_)
          for (Item &item : items_)
            item.describesPrimary = item.describesPrimary || item.identifier == from;
    }
  }

  void readLocations(const ByteRange &content) {
    BoxFields fields(content);
    const std::uint64_t version = fields.version();
    const std::uint64_t sizes = fields.take(2);
    const auto sizeAt = [&](int bits) { return static_cast<std::size_t>(sizes >> bits & 0xF); };
    const std::size_t offsetSize = sizeAt(12);
    const std::size_t lengthSize = sizeAt(8);
    const std::size_t baseSize = sizeAt(4);
    const std::size_t indexSize = version == 0 ? 0 : sizeAt(0);
    const std::size_t identifierSize = version < 2 ? 2 : 4;
    std::uint64_t count = fields.take(identifierSize);
    for (; count > 0 && !fields.isAtEnd() && reading_.budget.spendEntry(); --count) {
      const std::uint64_t identifier = fields.take(identifierSize);
      const std::uint64_t method = version == 0 ? 0 : fields.take(2) & 0xF;
      // Data of other files are not read.
      fields.skip(2);
      const std::uint64_t base = fields.take(baseSize);
      const std::uint64_t extentCount = fields.take(2);
      const auto item = std::find_if(items_.begin(), items_.end(),
                                     [&](const Item &one) { return one.identifier == identifier; });
      std::vector<ByteRange> extents;
      for (std::uint64_t i = 0; i < extentCount && !fields.isAtEnd(); ++i) {
        if (!reading_.budget.spendEntry())
          return;
        fields.skip(indexSize);
        const std::uint64_t offset = fields.take(offsetSize);
        const std::uint64_t length = fields.take(lengthSize);
        if (item != items_.end() && method <= 1 && offset <= UINT64_MAX - base)
          extents.push_back(
              (method == 0 ? file_ : data_).part(base + offset, length == 0 ? UINT64_MAX : length));
      }
      if (!extents.empty())
        readItem(item->isExif, extents);
    }
  }

  void readItem(bool isExif, const std::vector<ByteRange> &extents) {
    if (extents.size() == 1)
      return readData(isExif, extents.front());
    std::string all;
    for (const ByteRange &extent : extents)
      if (all.size() < ReadBudget::longestPacket)
        all += extent.read(ReadBudget::longestPacket);
    FileWindows memory(all, reading_.budget);
    readData(isExif, ByteRange(memory));
  }

  void readData(bool isExif, const ByteRange &data) {
    if (isExif)
      readOffsetExif(data, reading_);
    else
      readXMPPacket(data.read(ReadBudget::longestPacket), reading_, XMPPlace::file);
  }

  const ByteRange file_;
  PhotographReading &reading_;
  ByteRange data_ = file_.part(0, 0);
  std::uint64_t primary_ = 0;
  std::vector<Item> items_;
};

} // namespace

void readHEIFItems(const ByteRange &meta, const ByteRange &file, PhotographReading &reading) {
  ItemReader(file, reading).read(meta);
}

} // namespace searchsystem
