#pragma once

#include "readers/photographs/PhotographFields.h"

#include <array>
#include <cstdio>
#include <string>
#include <string_view>

namespace searchsystem {

/// Puts what it takes into one text.
class DescriptionSink : public PhotographSink {
public:
  bool takeField(std::string_view name, std::string_view text) override {
    description.append(description.empty() ? "" : "; ").append(name).append("=").append(text);
    return true;
  }
  void takeDate(const PhotographDate &date) override {
    std::array<char, 80> text;
    std::snprintf(text.data(), text.size(), " @%04d-%02d-%02d %02d:%02d:%02d", date.year,
                  date.month, date.day, date.hour, date.minute, date.second);
    description += text.data();
  }
  void takeCamera(std::string_view maker, std::string_view model) override {
    description.append(" #").append(maker).append("/").append(model);
  }
  std::string description;
};

/// What is read from a photograph: `Field=text; Field=text @date #maker/model`; if it was not read,
/// the number of the reason before it.
inline std::string descriptionOf(std::string_view file, std::string_view sidecar = {}) {
  MemorySource source(file);
  MemorySource beside(sidecar);
  DescriptionSink sink;
  const UnreadReason reason = readPhotograph(source, sidecar.empty() ? nullptr : &beside, sink);
  return reason == UnreadReason::none ? sink.description
                                      : std::to_string(static_cast<int>(reason)) + sink.description;
}

} // namespace searchsystem
