#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace searchsystem {

/// Writes a document of the layout that the reader knows. Its table may name any places: within
/// other objects, within lines, the same text many times. `text` is the file so far.
class HostileDocument {
public:
  /// The reader opens nothing that is shorter.
  HostileDocument() { text = "%PDF-1.4\n" + std::string(600, '-') + "\n"; }

  /// Names a place in the file, by default its end so far; returns the object's number.
  int name(std::size_t place) {
    places_.push_back(place);
    return static_cast<int>(places_.size()) - 1;
  }
  int name() { return name(text.size()); }

  HostileDocument &add(std::string_view bytes) {
    text += bytes;
    return *this;
  }

  /// Repeats a part up to that size of the file; returns where each copy begins.
  std::vector<std::size_t> repeat(std::string_view part, std::size_t size) {
    std::vector<std::size_t> places;
    while (text.size() < size) {
      places.push_back(text.size());
      text += part;
    }
    return places;
  }

  /// A page whose contents are at these places.
  int page(const std::vector<std::size_t> &contents) {
    const std::string references = referencesTo(contents);
    const int number = name();
    add("1 0 obj /Contents [" + references + " ]\nendobj\n");
    return number;
  }

  /// References to places, which get the next numbers.
  std::string referencesTo(const std::vector<std::size_t> &places) {
    std::string list;
    for (const std::size_t place : places)
      list += " " + std::to_string(name(place)) + " 0 R";
    return list;
  }

  /// The file with its catalog, page tree, table and trailer. `kids` is the list of references.
  std::string end(std::string_view kids, std::size_t count) {
    const int catalog = name();
    add("1 0 obj /Pages " + std::to_string(catalog + 1) + " 0 R\nendobj\n");
    name();
    add("1 0 obj /Count " + std::to_string(count) + " /Kids [").add(kids).add(" ]\nendobj\n");
    return endWithRoot(catalog);
  }

  /// A file of one page with these contents.
  std::string endWithContents(const std::vector<std::size_t> &contents) {
    return end(" " + std::to_string(page(contents)) + " 0 R", 1);
  }

  /// A file whose pages are at these places.
  std::string endWithPages(const std::vector<std::size_t> &pages) {
    return end(referencesTo(pages), pages.size());
  }

  std::string endWithRoot(int catalog) {
    const std::size_t table = text.size();
    const std::string count = std::to_string(places_.size());
    add("xref\n0 " + count + "\n");
    for (const std::size_t place : places_)
      add(std::to_string(place) + " 0 n\n");
    add("trailer\n<< /Size " + count + " /Root " + std::to_string(catalog) + " 0 R >>\n");
    return add("startxref\n" + std::to_string(table) + "\n%%EOF\n").text;
  }

  std::string text;

private:
  std::vector<std::size_t> places_{0};
};

} // namespace searchsystem
