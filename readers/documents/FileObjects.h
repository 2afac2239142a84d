#pragma once

#include "readers/documents/Arena.h"
#include "readers/documents/Encryption.h"
#include "readers/documents/Object.h"
#include "readers/documents/ObjectParser.h"
#include "readers/documents/SourceWindow.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace searchsystem {

/// How many bytes may be parsed or looked through. Each byte of a good document is parsed about
/// once; one whose objects overlap does not get time that grows with the square of its size.
class ParseAllowance {
public:
  explicit ParseAllowance(std::uint64_t size) noexcept { add(size); }
  void add(std::uint64_t size) noexcept { left_ += factor * size + extra; }
  /// False: it is used up.
  [[nodiscard]] bool spend(std::uint64_t bytes) noexcept {
    const bool isEnough = bytes <= left_;
    left_ -= isEnough ? bytes : left_;
    return isEnough;
  }

  [[nodiscard]] bool isUsedUp() const noexcept { return left_ == 0; }

private:
  static constexpr std::uint64_t factor = 8;
  static constexpr std::uint64_t extra = 65536;
  std::uint64_t left_ = 0;
};

struct IndirectObject {
  Reference reference;
  Object object;
  /// The offset behind it; of a stream, where its data begin.
  std::uint64_t end = 0;
};

/// Parses objects at offsets in a file.
class FileObjects {
public:
  FileObjects(SourceWindow &window, Arena &arena, ParseAllowance &allowance) noexcept
      : window_(window), parser_(arena, ObjectParser::Syntax::objects), arena_(arena),
        allowance_(allowance) {}

  /// An object with its number, `12 0 obj ...` (ISO 32000-2, 7.3.10), at the offset or behind white
  /// space. `encryption`, if there is one, is that of its strings.
  [[nodiscard]] std::optional<IndirectObject> readIndirect(std::uint64_t offset,
                                                           const Encryption *encryption);
  /// An object without a number.
  [[nodiscard]] std::optional<IndirectObject> readDirect(std::uint64_t offset);
  /// The offset behind `keyword`, if it is at the offset or behind white space.
  [[nodiscard]] std::optional<std::uint64_t> behindKeyword(std::uint64_t offset,
                                                           std::string_view keyword);

private:
  static constexpr std::size_t firstView = 2048;
  static constexpr std::size_t largestView = std::size_t{16} << 20;

  enum class Form { direct, indirect };
  [[nodiscard]] std::optional<IndirectObject> read(std::uint64_t offset, Form form,
                                                   const Encryption *encryption);
  /// Makes it a stream if the keyword follows. False: more bytes are needed to know.
  [[nodiscard]] bool takeStream(IndirectObject &read, std::uint64_t offset, bool isAll);

  SourceWindow &window_;
  ObjectParser parser_;
  Arena &arena_;
  ParseAllowance &allowance_;
};

} // namespace searchsystem
