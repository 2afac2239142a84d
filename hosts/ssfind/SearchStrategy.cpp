#include "hosts/ssfind/SearchStrategy.h"

namespace searchsystem::ssfind {

namespace {

/// Whether the end of a path could be taken for blanks around it.
bool hasBlankAtEdge(std::string_view folder) noexcept {
  const auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
  const std::string_view name = folder.substr(folder.rfind('/') + 1);
  return !name.empty() && (isBlank(name.front()) || isBlank(name.back()));
}

} // namespace

std::vector<Conditions> searchesFor(const Conditions &conditions) {
  if (conditions.isAnyEnough || !conditions.keyword)
    return {conditions};
  // A search for all conditions with both kinds of text passes over TIFF files; with one of them
  // it looks at PDF files alone, or at photographs of both kinds.
  std::vector<Conditions> searches;
  if (conditions.isKeywordInExif) {
    searches.push_back(conditions);
    searches.back().isKeywordInPDF = false;
  }
  // A PDF file has no shooting date.
  if (conditions.isKeywordInPDF && !conditions.taken) {
    searches.push_back(conditions);
    searches.back().isKeywordInExif = false;
  }
  return searches;
}

// With the index, a search for all conditions finds no TIFF file by its tags. One for any condition
// walks beside the index, by another choice of files than without it, and may report a file from
// both. A search for text in PDF files would give the same answer, but reads one file after the
// other on the main thread, where a walk has five threads.
//
// What remains are conditions on the name and on the date of change. The index disregards a range
// of dates with one end, and excludes ends; a DateRange has both, and no file's date is equal to
// one.
bool mayUseIndex(const Conditions &search, std::string_view folder) noexcept {
  return search.usesIndex && !search.keyword && !search.taken && !hasBlankAtEdge(folder);
}

} // namespace searchsystem::ssfind
