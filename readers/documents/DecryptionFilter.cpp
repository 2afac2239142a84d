#include "readers/documents/DecryptionFilter.h"

#include <algorithm>

#include <nettle/cbc.h>

namespace searchsystem {

namespace {

const std::uint8_t *bytesOf(std::string_view text) noexcept {
  return reinterpret_cast<const std::uint8_t *>(text.data());
}

} // namespace

RC4Filter::RC4Filter(ByteSink &next, std::string_view key) : next_(next) {
  nettle_arcfour_set_key(&context_, key.size(), bytesOf(key));
}

bool RC4Filter::take(std::string_view piece) {
  out_.resize(piece.size());
  nettle_arcfour_crypt(&context_, piece.size(), reinterpret_cast<std::uint8_t *>(out_.data()),
                       bytesOf(piece));
  return next_.take(out_);
}

AESFilter::AESFilter(ByteSink &next, std::string_view key) : next_(next) {
  if (key.size() == AES256_KEY_SIZE)
    nettle_aes256_set_decrypt_key(&context_.emplace<aes256_ctx>(), bytesOf(key));
  else
    nettle_aes128_set_decrypt_key(&context_.emplace<aes128_ctx>(), bytesOf(key));
}

bool AESFilter::take(std::string_view piece) {
  pending_ += piece;
  return decryptBlocks(false);
}

void AESFilter::finish() {
  static_cast<void>(decryptBlocks(true));
  next_.finish();
}

bool AESFilter::decryptBlocks(bool isLast) {
  if (!hasVector_) {
    if (pending_.size() < vector_.size())
      return true;
    std::copy_n(bytesOf(pending_), vector_.size(), vector_.begin());
    pending_.erase(0, vector_.size());
    hasVector_ = true;
  }
  std::size_t size = pending_.size() / AES_BLOCK_SIZE * AES_BLOCK_SIZE;
  if (!isLast && size == pending_.size() && size > 0)
    size -= AES_BLOCK_SIZE;
  if (size == 0)
    return true;
  out_.resize(size);
  auto *const out = reinterpret_cast<std::uint8_t *>(out_.data());
  if (auto *const aes256 = std::get_if<aes256_ctx>(&context_))
    nettle_cbc_decrypt(aes256, reinterpret_cast<nettle_cipher_func *>(nettle_aes256_decrypt),
                       AES_BLOCK_SIZE, vector_.data(), size, out, bytesOf(pending_));
  else
    nettle_cbc_decrypt(std::get_if<aes128_ctx>(&context_),
                       reinterpret_cast<nettle_cipher_func *>(nettle_aes128_decrypt),
                       AES_BLOCK_SIZE, vector_.data(), size, out, bytesOf(pending_));
  pending_.erase(0, size);
  if (isLast) {
    const std::size_t added = static_cast<unsigned char>(out_.back());
    if (added >= 1 && added <= AES_BLOCK_SIZE)
      out_.resize(size - added);
  }
  return next_.take(out_);
}

} // namespace searchsystem
