#include "readers/documents/Encryption.h"

#include "readers/documents/DecryptionFilter.h"

#include <algorithm>

#include <nettle/aes.h>
#include <nettle/arcfour.h>
#include <nettle/cbc.h>
#include <nettle/md5.h>
#include <nettle/sha2.h>

namespace searchsystem {

namespace {

// What stands for the empty password (7.6.4.3.2).
constexpr std::string_view
    padding("\x28\xBF\x4E\x5E\x4E\x75\x8A\x41\x64\x00\x4E\x56\xFF\xFA\x01\x08"
            "\x2E\x2E\x00\xB6\xD0\x68\x3E\x80\x2F\x0C\xA9\xFE\x64\x53\x69\x7A",
            32);

const std::uint8_t *bytesOf(std::string_view text) noexcept {
  return reinterpret_cast<const std::uint8_t *>(text.data());
}

std::uint8_t *bytesOf(std::string &text) noexcept {
  return reinterpret_cast<std::uint8_t *>(text.data());
}

template <typename Context, auto init, auto update, auto digest, std::size_t size>
std::string hash(std::string_view text) {
  Context context;
  init(&context);
  update(&context, text.size(), bytesOf(text));
  std::string result(size, '\0');
  digest(&context, size, bytesOf(result));
  return result;
}

std::string md5(std::string_view text) {
  return hash<md5_ctx, nettle_md5_init, nettle_md5_update, nettle_md5_digest, MD5_DIGEST_SIZE>(
      text);
}

std::string sha256(std::string_view text) {
  return hash<sha256_ctx, nettle_sha256_init, nettle_sha256_update, nettle_sha256_digest,
              SHA256_DIGEST_SIZE>(text);
}

std::string sha384(std::string_view text) {
  return hash<sha512_ctx, nettle_sha384_init, nettle_sha512_update, nettle_sha384_digest,
              SHA384_DIGEST_SIZE>(text);
}

std::string sha512(std::string_view text) {
  return hash<sha512_ctx, nettle_sha512_init, nettle_sha512_update, nettle_sha512_digest,
              SHA512_DIGEST_SIZE>(text);
}

std::string rc4(std::string_view key, std::string_view text) {
  arcfour_ctx context;
  nettle_arcfour_set_key(&context, key.size(), bytesOf(key));
  std::string result(text.size(), '\0');
  nettle_arcfour_crypt(&context, text.size(), bytesOf(result), bytesOf(text));
  return result;
}

// 7.6.4.3.4, algorithm 2.B, for the empty password.
std::string hardenedHash(std::string_view salt) {
  constexpr int leastRounds = 64;
  constexpr std::size_t repetitions = 64;
  std::string key = sha256(salt);
  std::string block;
  for (int round = 0; round < leastRounds || static_cast<unsigned char>(block.back()) > round - 32;
       ++round) {
    block.clear();
    for (std::size_t i = 0; i < repetitions; ++i)
      block += key;
    aes128_ctx context;
    nettle_aes128_set_encrypt_key(&context, bytesOf(key));
    std::array<std::uint8_t, AES_BLOCK_SIZE> vector{};
    std::copy_n(bytesOf(key) + AES_BLOCK_SIZE, vector.size(), vector.begin());
    nettle_cbc_encrypt(&context, reinterpret_cast<nettle_cipher_func *>(nettle_aes128_encrypt),
                       AES_BLOCK_SIZE, vector.data(), block.size(), bytesOf(block), bytesOf(block));
    unsigned sum = 0;
    for (std::size_t i = 0; i < AES_BLOCK_SIZE; ++i)
      sum += static_cast<unsigned char>(block[i]);
    key = sum % 3 == 0 ? sha256(block) : sum % 3 == 1 ? sha384(block) : sha512(block);
  }
  return key.substr(0, SHA256_DIGEST_SIZE);
}

} // namespace

// The entries of the encryption dictionary (7.6.2, table 20, and 7.6.4.2, table 21).
struct Encryption::Entries {
  std::int64_t version = 0;
  std::int64_t revision = 0;
  std::int64_t length = 0;
  std::int64_t permissions = 0;
  std::string_view owner;
  std::string_view user;
  std::string_view userKey;
};

std::unique_ptr<Encryption> Encryption::create(const Dictionary &dictionary,
                                               std::string_view identifier,
                                               const Resolve &resolve) {
  const auto get = [&](const Dictionary &from, std::string_view key) {
    return resolve(from.get(key));
  };
  const Object handler = get(dictionary, "Filter");
  if (handler.isName() && !handler.isName("Standard"))
    return nullptr;
  Entries entries;
  entries.version = get(dictionary, "V").integer();
  entries.revision = get(dictionary, "R").integer();
  entries.length = get(dictionary, "Length").integer(40);
  entries.permissions = get(dictionary, "P").integer();
  entries.owner = get(dictionary, "O").string();
  entries.user = get(dictionary, "U").string();
  entries.userKey = get(dictionary, "UE").string();

  std::unique_ptr<Encryption> encryption(new Encryption);
  encryption->encryptsMetadata_ = get(dictionary, "EncryptMetadata").boolean(true);
  if (entries.version >= 4) {
    const Object filters = get(dictionary, "CF");
    for (const DictionaryEntry &entry : filters.dictionary().entries()) {
      const Object method = get(resolve(entry.value).dictionary(), "CFM");
      encryption->filters_.emplace_back(entry.key, method.isName("V2")      ? Method::rc4
                                                   : method.isName("AESV2") ? Method::aes128
                                                   : method.isName("AESV3") ? Method::aes256
                                                                            : Method::none);
    }
    encryption->ofStreams_ = encryption->ofFilter(get(dictionary, "StmF").name());
    encryption->ofStrings_ = encryption->ofFilter(get(dictionary, "StrF").name());
  }
  const bool isOpen = entries.revision >= 5 ? encryption->openNewRevision(entries)
                                            : encryption->openOldRevision(entries, identifier);
  return isOpen ? std::move(encryption) : nullptr;
}

Encryption::Method Encryption::ofFilter(std::string_view name) const noexcept {
  const auto filter = std::find_if(filters_.rbegin(), filters_.rend(),
                                   [&](const auto &candidate) { return candidate.first == name; });
  return filter == filters_.rend() || name == "Identity" ? Method::none : filter->second;
}

// 7.6.4.3.2, algorithm 2, and 7.6.4.4, algorithms 4 to 6. Lengths that writers state are not to be
// relied on (bytes for bits, or none): of the lengths that can be, the right one opens the
// document.
bool Encryption::openOldRevision(const Entries &entries, std::string_view identifier) {
  constexpr std::size_t passwordSize = 32;
  constexpr std::size_t checkedSize = 16;
  constexpr int rehashes = 50;
  if (entries.revision < 2 || entries.owner.size() < passwordSize ||
      entries.user.size() < checkedSize)
    return false;
  std::string text(padding);
  text += entries.owner.substr(0, passwordSize);
  for (int shift = 0; shift < 32; shift += 8)
    text += static_cast<char>(entries.permissions >> shift);
  text += identifier;
  if (entries.revision >= 4 && !encryptsMetadata_)
    text.append(4, '\xFF');

  const std::int64_t stated = entries.length < 40 ? entries.length : entries.length / 8;
  for (const std::int64_t size : {entries.version >= 4 ? std::int64_t{16} : stated, stated,
                                  std::int64_t{5}, std::int64_t{16}}) {
    if (size < 5 || size > 16)
      continue;
    const auto keySize = static_cast<std::size_t>(size);
    std::string key = md5(text).substr(0, keySize);
    if (entries.revision == 2) {
      if (rc4(key, padding).starts_with(entries.user.substr(0, passwordSize))) {
        key_ = key;
        return true;
      }
      continue;
    }
    for (int i = 0; i < rehashes; ++i)
      key = md5(key).substr(0, keySize);
    std::string check = md5(std::string(padding).append(identifier));
    for (int i = 0; i < 20; ++i) {
      std::string changed = key;
      for (char &c : changed)
        c = static_cast<char>(c ^ i);
      check = rc4(changed, check);
    }
    if (entries.user.starts_with(check)) {
      key_ = key;
      return true;
    }
  }
  return false;
}

// 7.6.4.3.3, algorithm 2.A. Revision 5 was an extension of ISO 32000-1, with a plain hash.
bool Encryption::openNewRevision(const Entries &entries) {
  constexpr std::size_t hashSize = 32;
  constexpr std::size_t saltSize = 8;
  if (entries.user.size() < hashSize + 2 * saltSize || entries.userKey.size() < hashSize)
    return false;
  const auto hashOf = [&](std::string_view salt) {
    return entries.revision == 5 ? sha256(salt) : hardenedHash(salt);
  };
  if (hashOf(entries.user.substr(hashSize, saltSize)) != entries.user.substr(0, hashSize))
    return false;
  const std::string key = hashOf(entries.user.substr(hashSize + saltSize, saltSize));
  aes256_ctx context;
  nettle_aes256_set_decrypt_key(&context, bytesOf(std::string_view(key)));
  std::array<std::uint8_t, AES_BLOCK_SIZE> vector{};
  key_.resize(hashSize);
  nettle_cbc_decrypt(&context, reinterpret_cast<nettle_cipher_func *>(nettle_aes256_decrypt),
                     AES_BLOCK_SIZE, vector.data(), hashSize, bytesOf(key_),
                     bytesOf(entries.userKey));
  return true;
}

std::string Encryption::keyFor(Method method, Reference object) const {
  if (method == Method::aes256)
    return key_;
  std::string text = key_;
  for (int shift = 0; shift < 24; shift += 8)
    text += static_cast<char>(object.number >> shift);
  for (int shift = 0; shift < 16; shift += 8)
    text += static_cast<char>(object.generation >> shift);
  if (method == Method::aes128)
    text += "sAlT";
  return md5(text).substr(0, std::min<std::size_t>(key_.size() + 5, MD5_DIGEST_SIZE));
}

std::unique_ptr<ByteSink> Encryption::makeFilter(Method method, Reference object,
                                                 ByteSink &next) const {
  if (method == Method::none)
    return nullptr;
  const std::string key = keyFor(method, object);
  if (method == Method::rc4)
    return std::make_unique<RC4Filter>(next, key);
  if (key.size() == AES128_KEY_SIZE || key.size() == AES256_KEY_SIZE)
    return std::make_unique<AESFilter>(next, key);
  return nullptr;
}

std::string_view Encryption::decrypted(std::string_view string, Reference object,
                                       Arena &arena) const {
  class Collector final : public ByteSink {
  public:
    bool take(std::string_view piece) override {
      bytes.append(piece);
      return true;
    }
    std::string bytes;
  } collector;
  const std::unique_ptr<ByteSink> filter = makeFilter(ofStrings_, object, collector);
  if (filter == nullptr)
    return arena.copy(string);
  if (filter->take(string))
    filter->finish();
  return arena.copy(collector.bytes);
}

} // namespace searchsystem
