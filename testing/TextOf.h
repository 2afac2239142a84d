#pragma once

#include "readers/ByteSource.h"
#include "readers/documents/DocumentText.h"
#include "testing/CompressedDocument.h"

#include <algorithm>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace searchsystem {

/// Character maps by name.
class MapTable : public CharacterMaps {
public:
  MapTable() = default;
  explicit MapTable(std::map<std::string, std::string, std::less<>> maps)
      : maps_(std::move(maps)) {}
  [[nodiscard]] std::string read(std::string_view name) const override {
    const auto found = maps_.find(name);
    return found == maps_.end() ? std::string() : found->second;
  }

private:
  std::map<std::string, std::string, std::less<>> maps_;
};

class StringSink : public TextSink {
public:
  bool take(std::string_view utf8) override {
    text += utf8;
    return true;
  }
  std::string text;
};

/// The text of a document, with ~ for a hyphen at a line end and | behind each page; if the
/// document was not read, the number of the reason before it.
inline std::string textOf(std::string_view file, const CharacterMaps &maps = MapTable()) {
  MemorySource source(file);
  StringSink sink;
  const UnreadReason reason = readDocumentText(source, maps, sink);
  std::replace(sink.text.begin(), sink.text.end(), '\x01', '~');
  std::replace(sink.text.begin(), sink.text.end(), '\x0C', '|');
  return reason == UnreadReason::none ? sink.text
                                      : std::to_string(static_cast<int>(reason)) + sink.text;
}

/// A document of one page, with font F, Helvetica, and G, which a test may choose.
struct OnePage {
  std::string content;
  std::string font = "/Subtype /Type1 /BaseFont /Times-Roman /Encoding /MacRomanEncoding";
  /// Besides the fonts, and of the page and the catalog.
  std::string resources, page, catalog;
  /// Further objects, from number 10 on, and streams: number, entries, data.
  std::vector<std::pair<int, std::string>> objects;
  struct StreamObject {
    int number;
    std::string entries, data;
  };
  std::vector<StreamObject> streams;

  [[nodiscard]] std::string file() const {
    CompressedDocument pdf;
    pdf.object(1, "<< /Type /Catalog /Pages 2 0 R " + catalog + " >>");
    pdf.object(2, "<< /Type /Pages /Kids [3 0 R] /Count 1 /MediaBox [0 0 600 800] >>");
    pdf.object(3, "<< /Type /Page /Parent 2 0 R /Resources << /Font << /F 5 0 R /G 6 0 R >> " +
                      resources + " >> " + page +
                      (page.find("/Contents") == std::string::npos ? " /Contents 4 0 R" : "") +
                      " >>");
    pdf.stream(4, "", content);
    pdf.object(5, "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica "
                  "/Encoding /WinAnsiEncoding >>");
    pdf.object(6, "<< /Type /Font " + font + " >>");
    for (const auto &[number, body] : objects)
      pdf.object(number, body);
    for (const auto &[number, entries, data] : streams)
      pdf.deflatedStream(number, entries, data);
    return pdf.table().text;
  }
};

} // namespace searchsystem
