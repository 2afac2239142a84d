#pragma once

#include "readers/documents/Filter.h"

#include <array>
#include <cstdint>
#include <string>
#include <variant>

#include <nettle/aes.h>
#include <nettle/arcfour.h>

namespace searchsystem {

/// Decrypts by RC4.
class RC4Filter final : public ByteSink {
public:
  /// `key`: 1 to 256 bytes.
  RC4Filter(ByteSink &next, std::string_view key);

  [[nodiscard]] bool take(std::string_view piece) override;
  void finish() override { next_.finish(); }

private:
  ByteSink &next_;
  arcfour_ctx context_;
  std::string out_;
};

/// Decrypts by AES in chained blocks behind an initialization vector, and removes the padding at
/// the end (ISO 32000-2, 7.6.3.1). Bytes beyond whole blocks are dropped; a padding that cannot be
/// is left.
class AESFilter final : public ByteSink {
public:
  /// `key`: 16 or 32 bytes.
  AESFilter(ByteSink &next, std::string_view key);

  [[nodiscard]] bool take(std::string_view piece) override;
  void finish() override;

private:
  /// Decrypts whole blocks of `pending_`, all but the last one unless `isLast`.
  [[nodiscard]] bool decryptBlocks(bool isLast);

  ByteSink &next_;
  std::variant<aes128_ctx, aes256_ctx> context_;
  std::array<std::uint8_t, AES_BLOCK_SIZE> vector_{};
  bool hasVector_ = false;
  std::string pending_;
  std::string out_;
};

} // namespace searchsystem
