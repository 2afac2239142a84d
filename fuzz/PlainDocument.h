#pragma once

#include "pdf_reader/CPDFCatalog.h"
#include "pdf_reader/CPDFContents.h"
#include "pdf_reader/CPDFKids.h"
#include "pdf_reader/CPDFPages.h"
#include "pdf_reader/CPDFTrailer.h"
#include "pdf_reader/CPDFXRefTable.h"
#include "pdf_reader/LineUtility.h"
#include "platform/foundation/StringEncoding.h"
#include "platform/foundation/TextPattern.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace searchsystem {

/// A reader of documents without regard to cost: it copies, cuts and joins each line anew, and
/// parses each content stream by itself. The answers of the fast reader are compared with its own.
class PlainDocument {
public:
  /// `stepsLeft`: how many bytes it may examine before it gives up.
  PlainDocument(std::string_view file, long stepsLeft) : file_(file), stepsLeft_(stepsLeft) {}

  /// Whether it has given up.
  [[nodiscard]] bool isBudgetSpent() const { return stepsLeft_ < 0; }

  bool open() {
    if (file_.size() < 8 || !file_.starts_with("%PDF-"))
      return false;
    CPDFTrailer last;
    CPDFTrailer other;
    const auto lastPosition = lastTrailer();
    if (!lastPosition || !parse(last, *lastPosition) || last.GetXRefOffset() < 0)
      return false;
    const long next = nextTrailer(last.GetXRefOffset());
    if (next != *lastPosition) {
      if (!parse(other, next))
        return false;
      int size = 0;
      int otherSize = 0;
      if (other.GetXRefKeySize(&otherSize) == 1 &&
          (last.GetXRefKeySize(&size) != 1 || size < otherSize))
        last.SetXRefKeySize(otherSize);
      takeRoot(last, other);
    }
    int size = 0;
    if (last.GetXRefKeySize(&size) != 1)
      return false;
    table_.SetTableSize(size);
    std::set<long> visited;
    for (long offset = last.GetXRefOffset(); offset != 0 && visited.insert(offset).second;
         offset = other.GetXRefOffset()) {
      const auto end = offset < 0 ? std::nullopt : parseTable(offset);
      if (!end)
        return false;
      if (*end == *lastPosition)
        break;
      if (!parse(other, *end))
        return false;
      takeRoot(last, other);
    }
    tagOBJECTRECORD root;
    tagOBJECTRECORD pages;
    CPDFCatalog catalog;
    if (last.GetRootInfo(&root) != 1 || !parse(catalog, offsetOf(root)))
      return false;
    catalog.GetPagesInfo(&pages);
    return parse(pages_, offsetOf(pages));
  }

  bool find(std::string_view keyword, unsigned options, std::uint32_t encoding) {
    const TextPattern pattern(keyword, options);
    for (unsigned i = 0; i < pages_.GetKidsCount(); ++i) {
      const tagOBJECTRECORD *const kid = pages_.GetKidsInfo(static_cast<int>(i));
      CPDFKids kids;
      if (kid == nullptr || !parse(kids, offsetOf(*kid)))
        return false;
      for (int j = 0; j < kids.GeContentsCount(); ++j) {
        CPDFContents contents;
        if (!parse(contents, offsetOf(*kids.GetContentsInfo(j))))
          return false;
        std::string text(static_cast<std::size_t>(contents.GetTextLength()), '\0');
        unsigned long size = text.size();
        contents.GetTextString(reinterpret_cast<unsigned char *>(text.data()), &size);
        text.resize(size);
        auto converted = decodeText(text, encoding);
        if (!converted && encoding == 1)
          converted = decodeText(text, 1576);
        if (converted && pattern.find(*converted).length != 0)
          return true;
      }
    }
    return false;
  }

  struct Group {
    std::vector<std::string> tokens;
    long position;
  };

  /// Calls `take` with each line's tokens, and where they begin; `isComplete` is false for a part
  /// of a line that the edge of a block ends. Returns where reading stopped, which is when `take`
  /// returns false.
  using Take =
      std::function<bool(const std::vector<std::string> &, long position, bool isComplete)>;
  long forEachLine(long start, bool keepsComments, const Take &take) {
    const long size = static_cast<long>(file_.size());
    std::string carried;
    long carriedPosition = 0;
    for (long block = start; block < size; block += 1024) {
      const long count = std::min(1024L, size - block);
      stepsLeft_ -= count;
      if (stepsLeft_ < 0)
        return size;
      const bool isLast = block + count == size;
      for (long line = 0; line < count;) {
        const long next = endOfLine(block, line, count);
        const bool isJoined = !carried.empty();
        const std::string text =
            carried + std::string(file_.substr(static_cast<std::size_t>(block + line),
                                               static_cast<std::size_t>(next - line)));
        const long origin = isJoined ? carriedPosition : block + line;
        unsigned long begin = 0;
        unsigned long length = 0;
        const auto *const bytes = reinterpret_cast<const unsigned char *>(text.data());
        if (keepsComments)
          GetLineInfo_WithComment(bytes, text.size(), &begin, &length);
        else
          GetLineInfo(bytes, text.size(), &begin, &length);
        std::vector<std::string> tokens = tokensOf(text.substr(begin, length));
        const bool isTerminated = text.find_first_of("\r\n", begin + length) != std::string::npos;
        std::string().swap(carried);
        if (!tokens.empty() && begin + length == text.size() && !isLast) {
          carried = tokens.back();
          carriedPosition = origin + static_cast<long>(text.size() - carried.size());
          tokens.pop_back();
        }
        line = next;
        if (!tokens.empty() &&
            !take(tokens, origin + static_cast<long>(begin), isTerminated || isLast))
          return block + count;
      }
    }
    return std::max(start, size);
  }

private:
  long endOfLine(long block, long line, long count) const {
    const auto at = [&](long i) { return file_[static_cast<std::size_t>(block + i)]; };
    while (line < count && at(line) != '\r' && at(line) != '\n')
      ++line;
    if (line < count)
      line += at(line) == '\r' && line + 1 < count && at(line + 1) == '\n' ? 2 : 1;
    return line;
  }

  static std::vector<std::string> tokensOf(const std::string &line) {
    std::vector<std::string> tokens;
    std::string token;
    for (const char c : line + '\0')
      if (c != '\0' && c != '\t' && c != ' ')
        token += c;
      else if (!token.empty())
        tokens.push_back(std::exchange(token, std::string()));
    return tokens;
  }

  bool parse(CPDFSection &section, long position) {
    section.ReleaseParse();
    CParamArray collected;
    std::vector<std::string> pending;
    char goOn = 1;
    int result = 1;
    forEachLine(position, false, [&](const auto &tokens, long, bool isComplete) {
      pending.insert(pending.end(), tokens.begin(), tokens.end());
      if (!isComplete)
        return true;
      for (const std::string &token : pending)
        collected.AddParam(token.c_str());
      pending.clear();
      result = section.ParseLine(&collected, &goOn, nullptr);
      return result == 1 && goOn != 0;
    });
    return result == 1;
  }

  std::optional<long> lastTrailer() {
    const long size = static_cast<long>(file_.size());
    std::string copy(file_);
    for (long left = size; left > 0;) {
      const long before = left;
      const long count = left < 1024 ? 1024 - left : 1024;
      left -= count;
      if (left < 0 || left + count > size || (stepsLeft_ -= count) < 0)
        return std::nullopt;
      unsigned char *match = nullptr;
      auto *const block = reinterpret_cast<unsigned char *>(copy.data()) + left;
      constexpr unsigned char keyword[] = "trailer";
      FindKeyWordRev(block, static_cast<unsigned long>(count), keyword, &match);
      if (match != nullptr)
        return left + (match - block);
      if (left != 0)
        left += 7;
      if (left == before)
        return std::nullopt;
    }
    return std::nullopt;
  }

  long nextTrailer(long position) {
    std::optional<long> found;
    std::optional<std::pair<std::string, long>> first;
    const long end =
        forEachLine(position, false, [&](const auto &tokens, long where, bool isComplete) {
          if (!first)
            first = {tokens.front(), where};
          if (!isComplete)
            return true;
          if (first->first == "trailer")
            found = first->second;
          first.reset();
          return !found;
        });
    return found.value_or(end);
  }

  std::optional<long> parseTable(long position) {
    table_.ReleaseParse();
    CParamArray collected;
    std::vector<std::string> pending;
    char goOn = 1;
    int result = 1;
    std::optional<long> trailer;
    const auto handOver = [&] {
      for (const std::string &token : pending)
        collected.AddParam(token.c_str());
      pending.clear();
      result = table_.ParseLine(&collected, &goOn, nullptr);
    };
    const long end =
        forEachLine(position, false, [&](const auto &tokens, long where, bool isComplete) {
          if (tokens.front().starts_with("trailer")) {
            trailer = where;
            if (!pending.empty())
              handOver();
            return false;
          }
          pending.insert(pending.end(), tokens.begin(), tokens.end());
          if (!isComplete)
            return true;
          handOver();
          return result == 1 && goOn != 0;
        });
    if (result != 1)
      return std::nullopt;
    return trailer ? *trailer : end;
  }

  [[nodiscard]] long offsetOf(tagOBJECTRECORD object) const {
    return static_cast<long>(table_.GetOffset(object));
  }

  static void takeRoot(CPDFTrailer &last, const CPDFTrailer &other) {
    tagOBJECTRECORD root;
    if (last.GetRootInfo(&root) != 1 && other.GetRootInfo(&root) == 1)
      last.SetRootInfo(&root);
  }

  std::string_view file_;
  long stepsLeft_;
  CPDFXRefTable table_;
  CPDFPages pages_;
};

} // namespace searchsystem
