#include "streams/CIOStream.h"

int CIOStream::Open(unsigned short /*mode*/) { return 0; }

int CIOStream::Close() { return 0; }

int CIOStream::Read(void * /*buffer*/, long /*count*/, long * /*done*/) { return 0; }

int CIOStream::Write(void * /*buffer*/, long /*count*/, long * /*done*/) { return 0; }

int CIOStream::Seek(long /*offset*/, unsigned short /*origin*/) { return 0; }

long CIOStream::Tell() { return 0; }

long CIOStream::GetSize() { return 0; }

int CIOStream::Progress(unsigned char percent) {
  switch (progressMode_) {
  case streamProgressNone:
    return 1;
  case streamProgressEnd:
    if (percent != 100)
      return 1;
    break;
  case streamProgressEach:
    break;
  default:
    return 0;
  }
  return progressCallback_ != nullptr && progressCallback_(percent) ? 1 : 0;
}

int CIOStream::Release() {
  progressCallback_ = nullptr;
  progressMode_ = streamProgressNone;
  openMode_ = 0;
  return 1;
}
