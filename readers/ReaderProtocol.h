#pragma once

#include <cstddef>
#include <cstdint>

/// What the library and the reader program say to each other. Both run on one machine, so that
/// numbers are the machine's own.
///
/// The program is started with two descriptors: a socket, and a pidfd of the process that it
/// serves. Over the socket come requests, each with two descriptors: a socket for the answer, and
/// the document. The answer is a sequence of records: any number with text, then one that ends it.
/// All sockets keep the bounds of messages (SOCK_SEQPACKET), so that no process that dies can leave
/// half a record.
///
/// The beginning of a request, and the first byte of a record with the reason behind it, stay as
/// they are in all versions: by them a program of another version refuses.
namespace searchsystem {

/// Raised with every change of what is written here, or of what the texts mean.
constexpr std::uint32_t readerVersion = 1;
constexpr std::uint32_t requestMark = 0x51525353;

/// Where the program finds what it is started with.
constexpr int requestSocketDescriptor = 3;
constexpr int servedProcessDescriptor = 4;

/// What one document may cost, and how long the program waits for the next.
struct ReaderLimits {
  /// In bytes. Where a sanitizer needs the address space for itself, resident memory is meant.
  std::uint64_t memory = 512ULL << 20;
  std::uint64_t text = 32ULL << 20;
  std::uint32_t processorSeconds = 10;
  /// By the clock.
  std::uint32_t milliseconds = 30'000;
  std::uint32_t idleMilliseconds = 10'000;
};

struct ReaderRequest {
  std::uint32_t mark = requestMark;
  std::uint32_t version = readerVersion;
  ReaderLimits limits;
  /// Whether the answer is to begin with `ReaderRecord::alive`.
  std::uint64_t wantsSignOfLife = 1;
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
};

constexpr std::size_t longestPiece = std::size_t{64} << 10;

/// In a text: a hyphen at the end of a line, which may belong to the word or only divide it. It
/// stands for a hyphen or for nothing, and white space behind it for nothing.
constexpr char lineEndHyphen = '\x01';
/// In a text: the end of a page. It is white space.
constexpr char pageEnd = '\x0C';

/// No more workers live at once than this; further requests wait.
constexpr std::size_t mostWorkers = 6;

} // namespace searchsystem
