#include "readers/documents/Utf8.h"

namespace searchsystem {

namespace {

/// From 0x18 on, and from 0x80 on, where text strings differ from Latin-1 (ISO 32000-2, annex D.3).
constexpr char16_t accents[] = {0x02D8, 0x02C7, 0x02C6, 0x02D9, 0x02DD, 0x02DB, 0x02DA, 0x02DC};
constexpr char16_t upper[] = {
    0x2022, 0x2020, 0x2021, 0x2026, 0x2014, 0x2013, 0x0192, 0x2044, 0x2039, 0x203A, 0x2212,
    0x2030, 0x201E, 0x201C, 0x201D, 0x2018, 0x2019, 0x201A, 0x2122, 0xFB01, 0xFB02, 0x0141,
    0x0152, 0x0160, 0x0178, 0x017D, 0x0131, 0x0142, 0x0153, 0x0161, 0x017E, 0x0000, 0x20AC};

} // namespace

void appendUtf16(std::string &text, std::string_view bytes, std::endian order) {
  const std::size_t highByte = order == std::endian::big ? 0 : 1;
  char32_t high = 0;
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    const char32_t unit = static_cast<char32_t>(static_cast<unsigned char>(bytes[i + highByte]))
                              << 8 |
                          static_cast<unsigned char>(bytes[i + 1 - highByte]);
    if (unit >= 0xDC00 && unit < 0xE000) {
      if (high != 0)
        appendUtf8(text, 0x10000 + ((high - 0xD800) << 10) + (unit - 0xDC00));
      high = 0;
    } else if (unit >= 0xD800 && unit < 0xDC00) {
      high = unit;
    } else {
      appendUtf8(text, unit);
      high = 0;
    }
  }
}

std::string textStringToUtf8(std::string_view bytes) {
  std::string text;
  if (bytes.starts_with("\xFE\xFF")) {
    appendUtf16(text, bytes.substr(2));
  } else if (bytes.starts_with("\xFF\xFE")) {
    appendUtf16(text, bytes.substr(2), std::endian::little);
  } else if (bytes.starts_with("\xEF\xBB\xBF")) {
    text = bytes.substr(3);
  } else {
    for (const char c : bytes) {
      const auto code = static_cast<unsigned char>(c);
      appendUtf8(text, code >= 0x18 && code < 0x20   ? accents[code - 0x18]
                       : code >= 0x80 && code < 0xA1 ? upper[code - 0x80]
                                                     : code);
    }
  }
  return text;
}

} // namespace searchsystem
