#pragma once

namespace searchsystem {

/// How a stream is opened. Other bits are ignored.
enum : unsigned short {
  streamReadMode = 1,
  streamWriteMode = 2,     ///< creates the file, or empties it
  streamReadWriteMode = 3, ///< of an existing file
};

/// The origin of a seek.
enum : unsigned short {
  streamSeekBegin = 1,
  streamSeekCurrent = 2,
  streamSeekEnd = 3,
};

/// When a stream's progress callback is called.
enum : unsigned short {
  streamProgressNone = 0,
  streamProgressEnd = 1,  ///< at 100 % only
  streamProgressEach = 2, ///< at every step
};

/// Takes the percentage done; false asks to stop.
using StreamProgressCallback = bool (*)(unsigned char percent);

/// A stream of bytes with a position. In this base every operation but `Progress` and `Release`
/// returns 0.
///
/// Operations return 1 for success and 0 for failure; sizes and positions are in bytes, 0 when
/// unknown. The destructor of the derived class releases the stream: never delete one through a
/// pointer to this base.
/// Threads: one at a time.
class CIOStream {
public:
  CIOStream() noexcept = default;
  CIOStream(const CIOStream &) = delete;
  CIOStream &operator=(const CIOStream &) = delete;

  /// Opens in one of the modes above, after closing what was open.
  virtual int Open(unsigned short /*mode*/) { return 0; }

  virtual int Close() { return 0; }

  /// Reads up to `count` bytes at the position and moves it. `done`, unless null, receives the
  /// number of bytes read.
  virtual int Read(void * /*buffer*/, long /*count*/, long * /*done*/) { return 0; }

  /// Writes `count` bytes at the position and moves it. `done`, unless null, receives the number of
  /// bytes written.
  virtual int Write(void * /*buffer*/, long /*count*/, long * /*done*/) { return 0; }

  /// Moves the position to `offset` from the origin.
  virtual int Seek(long /*offset*/, unsigned short /*origin*/) { return 0; }

  virtual long Tell() { return 0; }
  virtual long GetSize() { return 0; }

  /// Reports the percentage done. 0 asks the caller to stop: the callback returned false or is
  /// missing, or the progress mode is unknown. For users of a stream; no stream calls it itself.
  virtual int Progress(unsigned char percent);

  /// Returns the stream to its initial state; always 1.
  virtual int Release();

protected:
  /// As given to `Open`; 0 while closed.
  unsigned short openMode_ = 0;
  unsigned short progressMode_ = 0;
  StreamProgressCallback progressCallback_ = nullptr;
};

} // namespace searchsystem
