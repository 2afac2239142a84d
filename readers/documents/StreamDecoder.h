#pragma once

#include "readers/documents/Encryption.h"
#include "readers/documents/FileObjects.h"
#include "readers/documents/Filter.h"
#include "readers/documents/Object.h"
#include "readers/documents/SourceWindow.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace searchsystem {

/// Follows references.
class ObjectResolver {
public:
  ObjectResolver() = default;
  ObjectResolver(const ObjectResolver &) = delete;
  ObjectResolver &operator=(const ObjectResolver &) = delete;
  virtual ~ObjectResolver() = default;
  /// What a reference leads to in the end; null for what is not there.
  [[nodiscard]] virtual Object resolve(const Object &object) = 0;
  [[nodiscard]] Object get(const Dictionary &dictionary, std::string_view key) {
    return resolve(dictionary.get(key));
  }
};

/// Decodes the data of streams (ISO 32000-2, 7.3.8), within the limits of the whole document.
class StreamDecoder {
public:
  using Take = std::function<bool(std::string_view)>;

  StreamDecoder(SourceWindow &window, ObjectResolver &resolver, ParseAllowance &allowance,
                std::uint64_t mostInflated) noexcept
      : window_(window), resolver_(resolver), allowance_(allowance), budget_(mostInflated),
        rawBudget_(mostInflated) {}

  /// See `Document::decode`. `encryption` may be null.
  bool decode(const Stream &stream, const Encryption *encryption, const Take &take);
  [[nodiscard]] std::string decoded(const Stream &stream, const Encryption *encryption,
                                    std::size_t most);
  /// How many bytes its encoded data take.
  [[nodiscard]] std::uint64_t encodedSize(const Stream &stream);
  [[nodiscard]] bool hasMetLimit() const noexcept {
    return budget_.isSpent() || rawBudget_.isSpent();
  }

private:
  /// Its filters; none if one of them gives nothing.
  [[nodiscard]] std::vector<FilterStep> stepsOf(const Dictionary &dictionary, bool &isOpaque);
  [[nodiscard]] Encryption::Method methodOf(const Dictionary &dictionary,
                                            const Encryption &encryption);
  [[nodiscard]] bool feed(std::uint64_t offset, std::uint64_t size, ByteSink &sink);
  /// A word, and where it is next: nowhere in between.
  struct NextWord {
    std::string_view word;
    std::uint64_t from = 1;
    std::uint64_t place = 0;
  };
  /// Where the word is, from the offset on; the end of the file if it is not there.
  [[nodiscard]] std::uint64_t find(std::uint64_t offset, NextWord &next);

  SourceWindow &window_;
  ObjectResolver &resolver_;
  ParseAllowance &allowance_;
  InflaterPool pool_;
  InflationBudget budget_;
  InflationBudget rawBudget_;
  NextWord endOfStream_{"endstream"};
  NextWord endOfObject_{"endobj"};
};

} // namespace searchsystem
