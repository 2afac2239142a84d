#pragma once

#include <string_view>

namespace searchsystem {

/// Takes the text of a file in pieces, as they are read. One thread.
class TextSink {
public:
  TextSink() = default;
  TextSink(const TextSink &) = delete;
  TextSink &operator=(const TextSink &) = delete;
  virtual ~TextSink() = default;

  /// False: nobody wants the rest.
  virtual bool take(std::string_view utf8) = 0;
};

} // namespace searchsystem
