#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>

namespace searchsystem {

struct CFileCloser {
  void operator()(std::FILE *file) const noexcept { std::fclose(file); }
};

using CFilePointer = std::unique_ptr<std::FILE, CFileCloser>;

/// Opens a file for one of the open modes of `CIOStream.h`, closed on exec.
///
/// For reading, or reading and writing, the file must exist and be a regular file; anything else
/// fails at once, even a pipe without a writer. For writing alone any kind of file is opened, as
/// the C library does. Null on failure and for any other mode. Throws `std::bad_alloc`.
CFilePointer openFile(const char *path, unsigned short mode);

/// Reads up to `count` bytes at the file's position and returns their number. A signal that the
/// host handles does not end the read. (It may fail a write: the C library does not report how much
/// of its buffer was written.)
std::size_t readFile(std::FILE *file, void *buffer, std::size_t count) noexcept;

/// The size of an open file in bytes, buffered ones included; none on failure. Keeps the position
/// and what was read ahead.
std::optional<long> sizeOfFile(std::FILE *file) noexcept;

/// Appends `count` > 0 zero bytes to an open file and moves its position behind them. For a regular
/// file, disk space is reserved, and nothing changes on failure.
bool appendZeros(std::FILE *file, long count) noexcept;

/// Permits a read after a write, or a write after a read, in a file open for both.
void turnToReading(std::FILE *file) noexcept;
void turnToWriting(std::FILE *file) noexcept;

/// A file opened by `CreateFile`, to be closed by `CloseHandle`.
struct FileHandle {
  std::FILE *file = nullptr; ///< null when the handle holds no file
};

/// The accesses that `CreateFile` knows.
enum : std::uint32_t { fileAccessWrite = 0x40000000, fileAccessRead = 0x80000000 };

/// Opens a regular file for reading. Null for any other access, and on failure. Further arguments
/// are ignored.
FileHandle *CreateFile(const char *path, std::uint32_t access, ...) noexcept;

/// Reads `count` bytes at the file's position and advances it. 1, or 0 if fewer were read. The last
/// two arguments are ignored.
int ReadFile(FileHandle *handle, void *buffer, unsigned long count, unsigned long *done,
             void *overlapped) noexcept;

/// The file's size in bytes; 0 if unknown or beyond 32 bits. Further arguments are ignored.
std::uint32_t FS_GetFileSize(FileHandle *handle, ...) noexcept;

/// Closes the file and destroys the handle. 1, or 0 if closing failed, or the handle is null or
/// holds no file.
int CloseHandle(FileHandle *handle) noexcept;

/// The start of the character before `current` in the Shift-JIS text at `start`; null unless
/// `current` is after `start`. If a NUL ends the text before `current`, the start of its last
/// character.
const char *_tcsdec(const char *start, const char *current) noexcept;

/// Copies `src` with its NUL, at most `n` bytes: the NUL only if it fits. Returns `dst`.
char *lstrcpyn(char *dst, const char *src, int n) noexcept;

} // namespace searchsystem
