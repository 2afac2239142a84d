#pragma once

/// How a stream is opened. Only these two bits are looked at.
enum : unsigned short {
  streamReadMode = 1,
  streamWriteMode = 2,     ///< made, or emptied
  streamReadWriteMode = 3, ///< of what exists
};

/// What the offset of a seek counts from.
enum : unsigned short {
  streamSeekBegin = 1,
  streamSeekCurrent = 2,
  streamSeekEnd = 3,
};

/// When a stream's progress callback is called.
enum : unsigned short {
  streamProgressNone = 0,
  streamProgressEnd = 1,  ///< at 100 per cent only
  streamProgressEach = 2, ///< at every step
};

/// Takes the percentage done; false asks to stop.
using StreamProgressCallback = bool (*)(unsigned char percent);

/// A stream of bytes with a position. This base does nothing: all its operations but `Progress` and
/// `Release` answer 0.
///
/// The operations answer 1 for success and 0 for failure; sizes and positions are in bytes, 0 when
/// unknown. A stream is released by the destructor of its own class and must not be deleted through
/// a pointer to its base.
/// Threads: one at a time.
class CIOStream {
public:
  CIOStream() noexcept = default;
  ~CIOStream() { CIOStream::Release(); }
  CIOStream(const CIOStream &) = delete;
  CIOStream &operator=(const CIOStream &) = delete;

  /// Opens in a mode as above; what was open is closed first.
  virtual int Open(unsigned short mode);

  virtual int Close();

  /// Reads up to `count` bytes at the position and moves it. `done`, when not null, receives how
  /// many bytes came.
  virtual int Read(void *buffer, long count, long *done);

  /// Writes `count` bytes at the position and moves it. `done`, when not null, receives how many
  /// bytes were written.
  virtual int Write(void *buffer, long count, long *done);

  /// Moves the position to `offset` from the origin.
  virtual int Seek(long offset, unsigned short origin);

  virtual long Tell();

  virtual long GetSize();

  /// Tells the callback what per cent is done, if the progress mode wants it. 0 asks the caller to
  /// stop: the callback answered false, is missing, or the progress mode is unknown. Whoever works
  /// with a stream calls it; no stream does so by itself.
  virtual int Progress(unsigned char percent);

  /// Returns the stream to the state in which it was made; always 1.
  virtual int Release();

protected:
  /// As given to `Open`; 0 while closed.
  unsigned short openMode_ = 0;
  unsigned short progressMode_ = 0;
  StreamProgressCallback progressCallback_ = nullptr;
};
