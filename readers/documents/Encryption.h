#pragma once

#include "readers/documents/Arena.h"
#include "readers/documents/Filter.h"
#include "readers/documents/Object.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace searchsystem {

/// Decrypts what can be read with the empty user password, by the standard security handler of the
/// revisions 2 to 6 (ISO 32000-2, 7.6).
class Encryption {
public:
  enum class Method : std::uint8_t { none, rc4, aes128, aes256 };
  using Resolve = std::function<Object(const Object &)>;

  /// `dictionary` is the trailer's Encrypt, `identifier` the first part of its ID. Null where
  /// another password, or something other than a password, is needed.
  [[nodiscard]] static std::unique_ptr<Encryption>
  create(const Dictionary &dictionary, std::string_view identifier, const Resolve &resolve);

  [[nodiscard]] Method ofStrings() const noexcept { return ofStrings_; }
  [[nodiscard]] Method ofStreams() const noexcept { return ofStreams_; }
  /// By the name of a crypt filter; none of Identity.
  [[nodiscard]] Method ofFilter(std::string_view name) const noexcept;
  [[nodiscard]] bool encryptsMetadata() const noexcept { return encryptsMetadata_; }

  /// A string of the object.
  [[nodiscard]] std::string_view decrypted(std::string_view string, Reference object,
                                           Arena &arena) const;
  /// Null for the method `none`.
  [[nodiscard]] std::unique_ptr<ByteSink> makeFilter(Method method, Reference object,
                                                     ByteSink &next) const;

private:
  struct Entries;

  Encryption() = default;
  [[nodiscard]] bool openOldRevision(const Entries &entries, std::string_view identifier);
  [[nodiscard]] bool openNewRevision(const Entries &entries);
  /// The key for an object (7.6.3.2, algorithm 1; 7.6.3.3, algorithm 1.A).
  [[nodiscard]] std::string keyFor(Method method, Reference object) const;

  std::string key_;
  Method ofStrings_ = Method::rc4;
  Method ofStreams_ = Method::rc4;
  bool encryptsMetadata_ = true;
  std::vector<std::pair<std::string_view, Method>> filters_;
};

} // namespace searchsystem
