#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>

/// Closes a file of the C library.
struct CFileCloser {
  void operator()(std::FILE *file) const noexcept { std::fclose(file); }
};

using CFilePointer = std::unique_ptr<std::FILE, CFileCloser>;

/// Opens a file for one of the open modes of `CIOStream.h`, closed on exec.
///
/// For reading, alone or with writing, the file has to exist and be a regular file; anything else
/// fails at once, a pipe that nobody writes to included. For writing alone it is opened as the C
/// library does, whatever it is. Null on failure and for any other mode.
CFilePointer openFile(const char *path, unsigned short mode) noexcept;

/// Reads at the file's position until `count` bytes are there or no more can be had; how many there
/// are. A signal that the host handles interrupts nothing. (It may make a write fail: the C library
/// does not tell how much of what it has collected was written, so that nothing can be made good.)
std::size_t readFile(std::FILE *file, void *buffer, std::size_t count) noexcept;

/// The size of an open file in bytes, with what was written last; the position stays, and so does
/// what was read ahead. None when it cannot be had.
std::optional<long> sizeOfFile(std::FILE *file) noexcept;

/// Puts `count` zero bytes, more than 0, behind the end that an open file has now, and its position
/// behind them. Of a regular file the disk has room for them then, and nothing changes on failure.
bool appendZeros(std::FILE *file, long count) noexcept;

/// Lets a read follow a write, or a write a read, of a file that is open for both.
void turnToReading(std::FILE *file) noexcept;
void turnToWriting(std::FILE *file) noexcept;

/// A file opened by `CreateFile`, to be closed by `CloseHandle`.
struct FileHandle {
  std::FILE *file = nullptr; ///< null when the handle holds no file
};

/// The accesses that `CreateFile` knows.
enum : std::uint32_t { fileAccessWrite = 0x40000000, fileAccessRead = 0x80000000 };

/// Opens a regular file to be read. Null for any access but reading alone, and on failure. Whatever
/// else is passed is ignored.
FileHandle *CreateFile(const char *path, std::uint32_t access, ...) noexcept;

/// Reads `count` bytes at the file's position, which moves by what was read. 1, or 0 when fewer
/// came. The last two arguments are ignored: `done` receives nothing.
int ReadFile(FileHandle *handle, void *buffer, unsigned long count, unsigned long *done,
             void *overlapped) noexcept;

/// The file's size in bytes; 0 when unknown, or beyond 32 bits. Whatever else is passed is ignored.
std::uint32_t FS_GetFileSize(FileHandle *handle, ...) noexcept;

/// Closes the file and destroys the handle. 1, or 0 when closing failed, the handle is null, or it
/// holds no file.
int CloseHandle(FileHandle *handle) noexcept;

/// The start of the character before `current` in the Shift-JIS text that begins at `start`: null
/// when `current` is not after `start`. A NUL ends the text; the last character before it is the
/// answer then.
const char *_tcsdec(const char *start, const char *current) noexcept;

/// Copies `src` with its NUL, at most `n` bytes: the NUL only when it fits. Gives `dst`.
char *lstrcpyn(char *dst, const char *src, int n) noexcept;
