#pragma once

#include "readers/documents/Font.h"
#include "readers/documents/NamedMaps.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

namespace searchsystem {

/// The fonts of a document by their objects, so that each is read once. The document and the maps
/// have to outlive it.
class FontCache {
public:
  static constexpr std::size_t mostKept = 200;
  static constexpr std::size_t mostOnPage = 2000;
  /// Bytes of font programs and maps in one document.
  static constexpr std::size_t mostRead = std::size_t{256} << 20;

  FontCache(Document &document, const CharacterMaps &maps) : document_(document), maps_(maps) {}

  /// The font that stands in a dictionary of resources, valid until the next page begins; null if
  /// there is none, or too many are on this page.
  [[nodiscard]] Font *find(const Object &font) {
    const Dictionary dictionary = document_.resolve(font).dictionary();
    if (dictionary.isEmpty() || fonts_.size() + unnamed_.size() >= mostOnPage)
      return nullptr;
    if (!font.isReference())
      return unnamed_.emplace_back(make(dictionary)).get();
    std::unique_ptr<Font> &kept = fonts_[font.reference().number];
    if (kept == nullptr)
      kept = make(dictionary);
    return kept.get();
  }

  void beginPage() {
    unnamed_.clear();
    if (fonts_.size() > mostKept)
      fonts_.clear();
  }

private:
  [[nodiscard]] std::unique_ptr<Font> make(const Dictionary &dictionary) {
    return std::make_unique<Font>(document_, maps_, dictionary, budget_);
  }

  Document &document_;
  NamedMaps maps_;
  std::size_t budget_ = mostRead;
  std::unordered_map<std::uint32_t, std::unique_ptr<Font>> fonts_;
  std::vector<std::unique_ptr<Font>> unnamed_;
};

} // namespace searchsystem
