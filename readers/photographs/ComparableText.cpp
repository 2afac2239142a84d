#include "readers/photographs/ComparableText.h"

#include "readers/documents/NormalisedText.h"
#include "readers/documents/TextOutput.h"
#include "readers/documents/TextSink.h"

#include <algorithm>

namespace searchsystem {

namespace {

class StringSink final : public TextSink {
public:
  explicit StringSink(std::string &text) : text_(text) {}
  bool take(std::string_view utf8) override {
    text_ += utf8;
    return true;
  }

private:
  std::string &text_;
};

/// Most texts are in this form as they are.
bool isPlainLine(std::string_view text) noexcept {
  char before = ' ';
  for (const char c : text) {
    if (static_cast<unsigned char>(c - ' ') >= 0x5F || (c == ' ' && before == ' '))
      return false;
    before = c;
  }
  return before != ' ';
}

} // namespace

std::string comparableText(std::string_view text) {
  std::string result;
  if (isPlainLine(text))
    return result = text;
  StringSink sink(result);
  TextOutput output(sink);
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find_first_of("\r\n"));
    TextTraits traits;
    output.addLine(normalised(line, traits));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
  }
  output.finish();
  // Nothing follows the last line.
  if (result.ends_with(TextOutput::hyphenAtLineEnd))
    result.back() = '-';
  result.resize(result.find_last_not_of(' ') + 1);
  return result;
}

} // namespace searchsystem
