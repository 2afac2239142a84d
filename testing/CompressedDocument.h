#pragma once

#include <cstddef>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <zlib.h>

namespace searchsystem {

/// Writes documents as today's programs do: cross-reference streams, object streams, compressed
/// data; and tables where they are asked for. `text` is the file so far.
///
///     CompressedDocument pdf;
///     pdf.book({"BT (one) Tj ET"}).crossReferenceStream(9);
///
/// Objects are catalog 1 and pages 2.
class CompressedDocument {
public:
  CompressedDocument() { text = "%PDF-1.7\n"; }

  /// One page with a line of text. A reader of the classic layout finds nothing in it.
  static std::string showing(const std::string &line) {
    return CompressedDocument()
        .object(1, "<< /Type /Catalog /Pages 2 0 R >>")
        .object(2, "<< /Type /Pages /Kids [3 0 R] /Count 1 >>")
        .object(3, "<< /Type /Page /Parent 2 0 R /Contents 4 0 R /MediaBox [0 0 600 800] "
                   "/Resources << /Font << /F 5 0 R >> >> >>")
        .deflatedStream(4, "", "BT /F 12 Tf 10 700 Td (" + line + ") Tj ET")
        .object(5, "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>")
        .crossReferenceStream(6)
        .text;
  }

  static std::string deflated(std::string_view data) {
    uLongf size = compressBound(data.size());
    std::string result(size, '\0');
    if (compress2(reinterpret_cast<Bytef *>(result.data()), &size,
                  reinterpret_cast<const Bytef *>(data.data()), data.size(), 9) != Z_OK)
      throw std::runtime_error("deflate");
    result.resize(size);
    return result;
  }

  CompressedDocument &raw(std::string_view bytes) {
    text += bytes;
    return *this;
  }

  CompressedDocument &object(int number, std::string_view body) {
    places_[number] = {text.size(), -1};
    return raw(std::to_string(number) + " 0 obj\n").raw(body).raw("\nendobj\n");
  }

  /// `entries` of the dictionary, but for the length.
  CompressedDocument &stream(int number, std::string_view entries, std::string_view data) {
    std::string body = "<< " + std::string(entries) + " /Length " + std::to_string(data.size());
    return object(number, body.append(" >>\nstream\n").append(data).append("\nendstream"));
  }

  CompressedDocument &deflatedStream(int number, std::string_view entries, std::string_view data) {
    return stream(number, std::string(entries) + " /Filter /FlateDecode", deflated(data));
  }

  CompressedDocument &objectStream(int number,
                                   const std::vector<std::pair<int, std::string>> &objects) {
    std::string heads, bodies;
    for (std::size_t i = 0; i < objects.size(); ++i) {
      heads += std::to_string(objects[i].first) + " " + std::to_string(bodies.size()) + " ";
      bodies += objects[i].second + "\n";
      places_[objects[i].first] = {static_cast<std::size_t>(number), static_cast<int>(i)};
    }
    return deflatedStream(number,
                          "/Type /ObjStm /N " + std::to_string(objects.size()) + " /First " +
                              std::to_string(heads.size()),
                          heads + bodies);
  }

  /// Catalog, pages, and from object 3 on a page and its content in turn.
  CompressedDocument &book(const std::vector<std::string> &contents) {
    std::string kids;
    for (std::size_t i = 0; i < contents.size(); ++i)
      kids += std::to_string(3 + 2 * i) + " 0 R ";
    object(1, "<< /Type /Catalog /Pages 2 0 R >>");
    object(2, "<< /Type /Pages /Kids [" + kids + "] /Count " + std::to_string(contents.size()) +
                  " >>");
    for (std::size_t i = 0; i < contents.size(); ++i) {
      const int page = static_cast<int>(3 + 2 * i);
      object(page,
             "<< /Type /Page /Parent 2 0 R /Contents " + std::to_string(page + 1) + " 0 R >>");
      deflatedStream(page + 1, "", contents[i]);
    }
    return *this;
  }

  /// Ends the file, or one part of it, with a table of the objects since the last end.
  CompressedDocument &table(const std::string &trailerEntries = "") {
    const std::size_t start = text.size();
    raw("xref\n0 1\n0000000000 65535 f \n");
    for (const auto &[number, place] : places_) {
      if (place.second < 0)
        raw(std::to_string(number) + " 1\n" + padded(place.first, 10) + " 00000 n \n");
    }
    raw("trailer\n<< /Size " + std::to_string(size()) + " /Root 1 0 R " + trailerEntries + " >>\n");
    return end(start);
  }

  /// The same by a stream, with the PNG predictor that programs use for it.
  CompressedDocument &crossReferenceStream(int number, const std::string &entries = "") {
    const std::size_t start = text.size();
    places_[number] = {start, -1};
    std::string index, rows, above(6, '\0');
    for (const auto &[object, place] : places_) {
      index += std::to_string(object) + " 1 ";
      std::string row(1, place.second < 0 ? '\1' : '\2');
      for (int shift = 24; shift >= 0; shift -= 8)
        row += static_cast<char>(place.first >> shift);
      row += static_cast<char>(place.second < 0 ? 0 : place.second);
      rows += '\2';
      for (std::size_t i = 0; i < row.size(); ++i)
        rows += static_cast<char>(row[i] - above[i]);
      above = row;
    }
    deflatedStream(number,
                   "/Type /XRef /W [1 4 1] /Root 1 0 R /Size " + std::to_string(size()) +
                       " /Index [" + index + "] /DecodeParms << /Predictor 12 /Columns 6 >> " +
                       entries,
                   rows);
    return end(start);
  }

  /// Of the last end.
  [[nodiscard]] std::size_t start() const { return start_; }
  [[nodiscard]] std::size_t offset(int number) const { return places_.at(number).first; }
  /// The next end says nothing of the objects so far.
  CompressedDocument &forget() {
    places_.clear();
    return *this;
  }

  std::string text;

private:
  static std::string padded(std::size_t value, std::size_t width) {
    const std::string digits = std::to_string(value);
    return std::string(width - digits.size(), '0') + digits;
  }

  [[nodiscard]] int size() const { return places_.empty() ? 1 : places_.rbegin()->first + 1; }

  CompressedDocument &end(std::size_t start) {
    start_ = start;
    return raw("startxref\n" + std::to_string(start) + "\n%%EOF\n");
  }

  /// Offset and -1, or object stream and place in it.
  std::map<int, std::pair<std::size_t, int>> places_;
  std::size_t start_ = 0;
};

} // namespace searchsystem
