#pragma once

#include "readers/ByteSource.h"
#include "readers/ReadResult.h"
#include "readers/documents/Arena.h"
#include "readers/documents/CrossReferenceTable.h"
#include "readers/documents/Encryption.h"
#include "readers/documents/FileObjects.h"
#include "readers/documents/FileScan.h"
#include "readers/documents/Object.h"
#include "readers/documents/ObjectParser.h"
#include "readers/documents/SourceWindow.h"
#include "readers/documents/StreamDecoder.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace searchsystem {

/// The indirect objects of a document, read when they are first asked for. Where cross-references
/// are wrong or missing, the file is looked through once.
class ObjectStore final : public ObjectResolver {
public:
  ObjectStore(ByteSource &source, std::uint64_t mostInflated);

  /// To be called first. `none`, `needsPassword` or `damaged`.
  [[nodiscard]] UnreadReason open();

  [[nodiscard]] Object resolve(const Object &object) override;
  bool decode(const Stream &stream, const StreamDecoder::Take &take) {
    return decoder_.decode(stream, encryption_.get(), take);
  }
  [[nodiscard]] std::string decoded(const Stream &stream, std::size_t most) {
    return decoder_.decoded(stream, encryption_.get(), most);
  }

  [[nodiscard]] const Dictionary &trailer() const noexcept { return trailer_; }
  [[nodiscard]] Dictionary catalog() { return get(trailer_, "Root").dictionary(); }
  [[nodiscard]] bool isEncrypted() const noexcept { return encryption_ != nullptr; }
  [[nodiscard]] bool hasMetLimit() const noexcept { return decoder_.hasMetLimit(); }

  /// Looks through the file and goes by what is there from now on. Answers as `open` does.
  UnreadReason repair();
  /// No object has this number or a higher one.
  [[nodiscard]] std::uint32_t end() const noexcept { return table_.end(); }

private:
  /// An object stream (ISO 32000-2, 7.5.7), decoded.
  struct ObjectStream {
    struct Head {
      std::uint32_t number;
      std::uint64_t offset;
    };
    std::string bytes;
    std::vector<Head> heads;
  };

  [[nodiscard]] Object load(std::uint32_t number);
  [[nodiscard]] std::optional<Object> readInFile(std::uint32_t number, std::uint64_t position);
  [[nodiscard]] std::optional<Object> readInStream(std::uint32_t number,
                                                   const CrossReference &entry);
  [[nodiscard]] const ObjectStream *objectStream(std::uint64_t number);
  /// `bytes` need not hold more than what stands in front of the first object.
  [[nodiscard]] std::vector<ObjectStream::Head> headsOf(const Dictionary &dictionary,
                                                        std::string_view bytes);
  [[nodiscard]] UnreadReason openEncryption();
  /// Fills `scanned_`, once.
  void scan();
  /// Enters what the object streams hold that the scan has found.
  void enterObjectStreams(CrossReferenceTable &table);
  void takeScannedTrailer();

  SourceWindow window_;
  Arena arena_;
  ParseAllowance allowance_;
  FileObjects objects_;
  ObjectParser parser_;
  StreamDecoder decoder_;
  CrossReferenceTable table_;
  Dictionary trailer_;
  std::uint64_t headerOffset_ = 0;
  std::unique_ptr<Encryption> encryption_;
  /// Its strings are not encrypted.
  std::optional<std::uint32_t> encryptionNumber_;
  std::optional<FileScan> scan_;
  CrossReferenceTable scanned_;
  bool areStreamsEntered_ = false;
  bool isRepaired_ = false;
  int depth_ = 0;
  std::unordered_map<std::uint64_t, std::unique_ptr<ObjectStream>> objectStreams_;
  /// In the order in which they were decoded.
  std::deque<std::uint64_t> streamOrder_;
  std::size_t streamBytes_ = 0;
};

} // namespace searchsystem
