#pragma once

#include "readers/ByteSource.h"
#include "readers/documents/Document.h"

#include <string>
#include <string_view>
#include <variant>

namespace searchsystem {

/// The decoded contents of the pages, each followed by a bar; or why there are none.
inline std::string pagesOf(ByteSource &source) {
  const auto opened = Document::open(source);
  if (const auto *reason = std::get_if<UnreadReason>(&opened))
    return *reason == UnreadReason::needsPassword ? "needs a password"
           : *reason == UnreadReason::tooLarge    ? "too large"
                                                  : "damaged";
  Document &document = *std::get<std::unique_ptr<Document>>(opened);
  std::string text;
  document.forEachPage([&](const Page &page) {
    const auto add = [&](const Object &object) {
      if (const Stream *const stream = document.resolve(object).stream())
        text += document.decoded(*stream, 1 << 17);
    };
    const Object contents = document.get(page.dictionary, "Contents");
    add(contents);
    for (const Object &part : contents.array())
      add(part);
    text += '|';
    return true;
  });
  return document.hasMetLimit() ? "too large" : text;
}

inline std::string pagesOf(std::string_view file) {
  MemorySource source(file);
  return pagesOf(source);
}

} // namespace searchsystem
