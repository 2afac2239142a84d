#pragma once

#include <string_view>

namespace searchsystem {

/// Takes a document's text, piece by piece, in reading order.
class TextSink {
public:
  TextSink() = default;
  TextSink(const TextSink &) = delete;
  TextSink &operator=(const TextSink &) = delete;
  virtual ~TextSink() = default;
  /// A piece of some 64 KiB of UTF-8, cut anywhere. False: no more is wanted.
  virtual bool take(std::string_view utf8) = 0;
};

} // namespace searchsystem
