#pragma once

#include <cstddef>
#include <cstdint>

/// What the library and the reader program say to each other. Both run on one machine, so that
/// numbers are the machine's own.
///
/// The program is started with two descriptors: a socket, and a pidfd of the process that it
/// serves. Over the socket come requests for workers, each with a socket for the answer.
///
/// A request to read a document comes with a second descriptor, the document. The answer is a
/// sequence of records: any number with text, then one that ends it.
///
/// A request to read photographs comes with the socket alone. Over that the worker gets photographs
/// (`PhotographBatch`), again and again, until the socket ends. It answers in their order. A
/// photograph's answer is a sequence of parts: fields, date, camera, then one that ends it. They
/// come in records, several answers in one if that was allowed. A record that ends a document's
/// answer says here that the worker itself has ended; if each answer was to be sent alone, over the
/// first photograph without one.
///
/// All sockets keep the bounds of messages (SOCK_SEQPACKET), so that no process that dies can leave
/// half a record.
///
/// The beginning of a request, and the first byte of a record with the reason behind it, stay as
/// they are in all versions: by them a program of another version refuses.
namespace searchsystem {

/// Raised with every change of what is written here, or of what the texts mean.
constexpr std::uint32_t readerVersion = 3;
constexpr std::uint32_t requestMark = 0x51525353;

/// Where the program finds what it is started with.
constexpr int requestSocketDescriptor = 3;
constexpr int servedProcessDescriptor = 4;

/// What a worker may cost, and how long the program waits for the next request.
struct ReaderLimits {
  /// In bytes. Where a sanitizer needs the address space for itself, resident memory is meant.
  std::uint64_t memory = 512ULL << 20;
  std::uint64_t text = 32ULL << 20;
  std::uint32_t processorSeconds = 10;
  /// By the clock, for one document or photograph. The host watches over photographs.
  std::uint32_t milliseconds = 30'000;
  std::uint32_t idleMilliseconds = 10'000;
};

enum class ReaderTask : std::uint32_t { document, photographs };

struct ReaderRequest {
  std::uint32_t mark = requestMark;
  std::uint32_t version = readerVersion;
  ReaderLimits limits;
  /// Whether the answer is to begin with `ReaderRecord::alive`.
  std::uint32_t wantsSignOfLife = 1;
  ReaderTask task = ReaderTask::document;
};

/// Photographs that are read one after another. With it come their descriptors, each followed by
/// that of its sidecar if it has one.
struct PhotographBatch {
  static constexpr std::size_t mostPhotographs = 16;

  std::uint32_t count = 0;
  /// A bit for each photograph that has a sidecar, the lowest for the first.
  std::uint32_t sidecars = 0;
  /// Whether an answer may wait for others, but not for the disk. Otherwise each is sent before the
  /// next photograph is read.
  std::uint64_t mayAnswerTogether = 0;
  /// Of the files, in bytes, in the order of their descriptors.
  std::uint64_t sizes[2 * mostPhotographs] = {};
};

/// The first byte of a record.
enum class ReaderRecord : std::uint8_t {
  /// The program is at work.
  alive = 1,
  /// Followed by at most `longestPiece` bytes of text: UTF-8 after compatibility normalisation
  /// (NFKC), with each run of white space as one blank, without soft hyphens. A character may be
  /// divided between two records.
  text = 2,
  /// Followed by an `UnreadReason`, one byte.
  end = 3,
  /// Followed by parts of photographs' answers, together no longer than `longestPiece`.
  photograph = 4,
};

/// The first byte of a part. The length of its content follows as a number of 32 bits, then the
/// content.
enum class PhotographPart : std::uint8_t {
  /// The name of a field, whose text follows.
  name = 1,
  /// Some of the text of the field, in the form of `ReaderRecord::text`.
  text = 2,
  /// When it was taken, by the camera's clock: `2004/05/06 07:08:09`.
  date = 3,
  /// The camera's, in UTF-8, at most `longestCameraText` bytes.
  maker = 4,
  model = 5,
  /// An `UnreadReason`. What follows is of the next photograph.
  end = 6,
};

constexpr std::size_t longestPiece = std::size_t{64} << 10;
constexpr std::size_t longestCameraText = 255;

/// In a text: a hyphen at the end of a line, which may belong to the word or only divide it. It
/// stands for a hyphen or for nothing, and white space behind it for nothing.
constexpr char lineEndHyphen = '\x01';
/// In a text: the end of a page. It is white space.
constexpr char pageEnd = '\x0C';

/// No more workers live at once than this; further requests wait. Five may read documents, as many
/// wait for photographs, and one serves the host itself.
constexpr std::size_t mostReaderWorkers = 11;

} // namespace searchsystem
