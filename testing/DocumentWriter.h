#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace searchsystem {

/// Writes documents of the layout that the reader knows, piece by piece.
///
///     DocumentWriter pdf;
///     pdf.pages({3}).page(3, {4}).content(4, "BT\n<4869> Tj\nET").section();
///
/// Objects are catalog 1 and pages 2 unless said otherwise. `text` is the file so far.
class DocumentWriter {
public:
  struct Style {
    std::string lineEnd = "\n";
    /// The trailer's dictionary on the line of its keyword.
    bool hasTrailerOnOneLine = false;
  };

  DocumentWriter() { text = "%PDF-1.4\n"; }
  explicit DocumentWriter(Style style) : style_(std::move(style)) { text = "%PDF-1.4" + end(); }

  DocumentWriter &object(int number, const std::string &body) {
    offsets_[number] = text.size();
    return raw(std::to_string(number) + " 0 obj" + end() + body + end() + "endobj" + end());
  }

  DocumentWriter &pages(const std::vector<int> &kids) {
    object(1, "<< /Type /Catalog" + end() + "/Pages 2 0 R" + end() + ">>");
    return object(2, "<< /Type /Pages" + end() + "/Kids " + references(kids) + end() + "/Count " +
                         std::to_string(kids.size()) + end() + ">>");
  }

  DocumentWriter &page(int number, const std::vector<int> &contents) {
    return object(number,
                  "<< /Type /Page" + end() + "/Contents " + references(contents) + end() + ">>");
  }

  DocumentWriter &content(int number, const std::string &data) {
    return object(number, "<< /Length " + std::to_string(data.size()) + " >>" + end() + "stream" +
                              end() + data + end() + "endstream");
  }

  /// A content stream that shows each text on a line of its own.
  DocumentWriter &shown(int number, const std::vector<std::string> &texts) {
    return content(number, showing(texts));
  }

  [[nodiscard]] std::string showing(const std::vector<std::string> &texts) const {
    std::string data = "BT" + end();
    for (const std::string &shownText : texts)
      data += hex(shownText) + " Tj" + end();
    return data + "ET";
  }

  /// Pages 3, 5, 7 and so on, each with one content, in the object behind it.
  DocumentWriter &book(const std::vector<std::string> &contents) {
    std::vector<int> kids;
    for (int number = 3; kids.size() < contents.size(); number += 2)
      kids.push_back(number);
    pages(kids);
    for (std::size_t i = 0; i < kids.size(); ++i)
      page(kids[i], {kids[i] + 1}).content(kids[i] + 1, contents[i]);
    return *this;
  }

  DocumentWriter &raw(const std::string &bytes) {
    text += bytes;
    return *this;
  }

  /// A comment line of so many bytes in all, of doubled percent signs, which are text.
  DocumentWriter &filler(std::size_t size) {
    const std::size_t body = size - std::min(size, end().size());
    return raw(std::string(body, 'x') + end());
  }

  /// A cross-reference section for the objects that were written since the last one, a trailer, and
  /// the end of the file. `root` and `size` of 0 are left out of the trailer.
  DocumentWriter &section(int root = 1, int size = -1) {
    const std::size_t start = table();
    return trailer(root, size, start);
  }

  std::size_t table() {
    const std::size_t start = text.size();
    raw("xref" + end());
    for (auto first = offsets_.begin(); first != offsets_.end();) {
      auto last = first;
      int count = 0;
      while (last != offsets_.end() && last->first == first->first + count) {
        ++last;
        ++count;
      }
      raw(std::to_string(first->first) + " " + std::to_string(count) + end());
      for (; first != last; ++first) {
        char entry[32];
        std::snprintf(entry, sizeof entry, "%010zu 00000 n", first->second);
        raw(entry + (end().size() == 2 ? end() : " " + end()));
      }
    }
    greatest_ = offsets_.empty() ? greatest_ : std::max(greatest_, offsets_.rbegin()->first);
    offsets_.clear();
    return start;
  }

  DocumentWriter &trailer(int root, int size, std::size_t xrefOffset) {
    raw("trailer" + (style_.hasTrailerOnOneLine ? " " : end()) + "<<");
    if (size != 0)
      raw(" /Size " + std::to_string(size < 0 ? greatest_ + 1 : size));
    if (root != 0)
      raw(" /Root " + std::to_string(root) + " 0 R");
    return raw(" >>" + end() + "startxref" + end() + std::to_string(xrefOffset) + end() + "%%EOF" +
               end());
  }

  [[nodiscard]] static std::string hex(std::string_view bytes) {
    constexpr char digits[] = "0123456789ABCDEF";
    std::string token = "<";
    for (const char byte : bytes) {
      token += digits[static_cast<unsigned char>(byte) / 16];
      token += digits[static_cast<unsigned char>(byte) % 16];
    }
    return token + ">";
  }

  [[nodiscard]] static std::string references(const std::vector<int> &numbers) {
    std::string list = "[";
    for (const int number : numbers)
      list += " " + std::to_string(number) + " 0 R";
    return list + " ]";
  }

  [[nodiscard]] const std::string &end() const { return style_.lineEnd; }
  [[nodiscard]] const std::map<int, std::size_t> &offsets() const { return offsets_; }

  std::string text;

private:
  Style style_;
  std::map<int, std::size_t> offsets_;
  int greatest_ = 0;
};

/// A document of one page that shows these texts, large enough to be opened.
inline std::string documentShowing(const std::vector<std::string> &texts) {
  DocumentWriter pdf;
  return pdf.filler(600).book({pdf.showing(texts)}).section().text;
}

} // namespace searchsystem
