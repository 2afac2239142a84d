#include "streams/CStringBuffer.h"

#include <cstring>

namespace searchsystem {

int CStringBuffer::SetString(const char *str, int len) noexcept {
  if (str == nullptr)
    return 0;
  return buffer_.replace(str, len < 0 ? std::strlen(str) : static_cast<unsigned long>(len), true);
}

CStringBuffer &CStringBuffer::operator=(const char *str) noexcept {
  SetString(str, -1);
  return *this;
}

CStringBuffer &CStringBuffer::operator+=(const char *str) noexcept {
  const unsigned long size = buffer_.GetDataSize();
  if (str == nullptr)
    return *this;
  if (size == 0)
    return *this = str;
  buffer_.InsertData(size - 1, "", 1);
  return *this;
}

unsigned long CStringBuffer::GetLength() const noexcept {
  const unsigned long size = buffer_.GetDataSize();
  return size == 0 ? 0 : size - 1;
}

int CStringBuffer::Reset() noexcept { return buffer_.SetData("", 1); }

int CStringBuffer::Release() noexcept {
  buffer_.Release();
  return 1;
}

} // namespace searchsystem
