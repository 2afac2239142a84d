#include "streams/FileFunctions.h"

#include "streams/CIOStream.h"
#include "streams/ZeroWithoutMemory.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <new>
#include <stdio_ext.h>
#include <sys/stat.h>
#include <unistd.h>

namespace searchsystem {

namespace {

/// open(2), repeated after a signal, which may interrupt it on a slow device or a network.
int openUninterrupted(const char *path, int flags, mode_t permissions = 0) noexcept {
  int descriptor = -1;
  do
    descriptor = open(path, flags, permissions);
  while (descriptor == -1 && errno == EINTR);
  return descriptor;
}

/// A regular file's descriptor, or -1.
int openRegularFile(const char *path, int access) noexcept {
  struct stat status;
  // Checked before opening too: opening a pipe releases its writer, and opening a device may move
  // it.
  if (stat(path, &status) != 0 || !S_ISREG(status.st_mode))
    return -1;
  const int descriptor = openUninterrupted(path, access | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  if (descriptor < 0)
    return -1;
  if (fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode))
    return descriptor;
  close(descriptor);
  return -1;
}

CFilePointer fileOfDescriptor(int descriptor, const char *mode) {
  if (descriptor < 0)
    return nullptr;
  CFilePointer file(fdopen(descriptor, mode));
  if (file == nullptr) {
    close(descriptor);
    throw std::bad_alloc();
  }
  return file;
}

bool isRegular(std::FILE *file, struct stat &status) noexcept {
  return fstat(fileno(file), &status) == 0 && S_ISREG(status.st_mode);
}

/// The first byte of a two-byte character of the Mac.
bool isLeadByte(unsigned char byte) noexcept {
  return (byte >= 0x81 && byte <= 0x9f) || (byte >= 0xe0 && byte <= 0xfc);
}

} // namespace

CFilePointer openFile(const char *path, unsigned short mode) {
  constexpr mode_t permissions = 0666;
  switch (mode) {
  case streamReadMode:
    return fileOfDescriptor(openRegularFile(path, O_RDONLY), "rb");
  case streamWriteMode:
    return fileOfDescriptor(
        openUninterrupted(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, permissions), "wb");
  case streamReadWriteMode:
    return fileOfDescriptor(openRegularFile(path, O_RDWR), "r+b");
  default:
    return nullptr;
  }
}

std::size_t readFile(std::FILE *file, void *buffer, std::size_t count) noexcept {
  std::size_t done = 0;
  for (;;) {
    errno = 0;
    done += std::fread(static_cast<char *>(buffer) + done, 1, count - done, file);
    if (done == count || std::ferror(file) == 0 || errno != EINTR)
      return done;
    std::clearerr(file);
  }
}

std::optional<long> sizeOfFile(std::FILE *file) noexcept {
  if (__fpending(file) > 0 && std::fflush(file) != 0)
    return std::nullopt;
  struct stat status;
  // A regular file needs no seek to the end and back, which would drop what was read ahead.
  if (isRegular(file, status)) {
    // Like a seek, this permits reading on in a file that has grown.
    std::clearerr(file);
    return status.st_size <= LONG_MAX ? std::optional(static_cast<long>(status.st_size))
                                      : std::nullopt;
  }
  const long position = std::ftell(file);
  if (std::fseek(file, 0, SEEK_END) != 0)
    return std::nullopt;
  const long size = std::ftell(file);
  std::fseek(file, position, SEEK_SET);
  return size >= 0 ? std::optional(size) : std::nullopt;
}

bool appendZeros(std::FILE *file, long count) noexcept {
  const long position = std::ftell(file);
  struct stat status;
  if (std::fflush(file) != 0)
    return false;
  if (!isRegular(file, status)) {
    bool isWritten = std::fseek(file, 0, SEEK_END) == 0;
    for (; isWritten && count > 0; --count)
      isWritten = std::putc(0, file) == 0;
    return isWritten && std::fflush(file) == 0;
  }
  // Zeros with space on the disk, unlike a hole, where a later write could fail.
  int error = EINTR;
  while (error == EINTR)
    error = posix_fallocate(fileno(file), status.st_size, count);
  if (error == 0)
    return std::fseek(file, 0, SEEK_END) == 0;
  // A part may have been written where the system cannot reserve space.
  [[maybe_unused]] const int isCut = ftruncate(fileno(file), status.st_size);
  std::fseek(file, position, SEEK_SET);
  return false;
}

void turnToReading(std::FILE *file) noexcept {
  if (__fwriting(file) != 0)
    std::fflush(file);
}

void turnToWriting(std::FILE *file) noexcept {
  if (__freading(file) != 0)
    std::fseek(file, 0, SEEK_CUR);
}

FileHandle *CreateFile(const char *path, std::uint32_t access, ...) noexcept {
  if (path == nullptr || access != fileAccessRead)
    return nullptr;
  return zeroWithoutMemory([path]() -> FileHandle * {
    CFilePointer file = openFile(path, streamReadMode);
    // NOLINTNEXTLINE(bugprone-unhandled-exception-at-new): caught above
    return file == nullptr ? nullptr : new FileHandle{file.release()};
  });
}

int ReadFile(FileHandle *handle, void *buffer, unsigned long count, unsigned long * /*done*/,
             void * /*overlapped*/) noexcept {
  if (handle == nullptr || handle->file == nullptr || buffer == nullptr)
    return 0;
  return readFile(handle->file, buffer, count) == count ? 1 : 0;
}

std::uint32_t FS_GetFileSize(FileHandle *handle, ...) noexcept {
  if (handle == nullptr || handle->file == nullptr)
    return 0;
  const long size = sizeOfFile(handle->file).value_or(0);
  return static_cast<unsigned long>(size) <= UINT32_MAX ? static_cast<std::uint32_t>(size) : 0;
}

int CloseHandle(FileHandle *handle) noexcept {
  if (handle == nullptr)
    return 0;
  const bool isClosed = handle->file != nullptr && std::fclose(handle->file) == 0;
  delete handle;
  return isClosed ? 1 : 0;
}

const char *_tcsdec(const char *start, const char *current) noexcept {
  if (start == nullptr || current == nullptr || current <= start)
    return nullptr;
  const char *character = start;
  while (*character != 0) {
    const int width = isLeadByte(static_cast<unsigned char>(*character)) ? 2 : 1;
    if (current - character <= width || character[width] == 0)
      break;
    character += width;
  }
  return character;
}

char *lstrcpyn(char *dst, const char *src, int n) noexcept {
  for (int i = 0; i < n; ++i) {
    dst[i] = src[i];
    if (src[i] == 0)
      break;
  }
  return dst;
}

} // namespace searchsystem
