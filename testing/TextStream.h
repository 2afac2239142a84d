#pragma once

#include "streams/CMemStream.h"

#include <string>
#include <utility>

namespace searchsystem {

/// A stream over a text of its own, open for reading.
class TextStream : public CMemStream {
public:
  explicit TextStream(std::string text) : text_(std::move(text)) {
    Attach(reinterpret_cast<unsigned char *>(text_.data()), static_cast<long>(text_.size()));
    Open(streamReadMode);
  }

private:
  std::string text_;
};

} // namespace searchsystem
