#include "streams/CIOStream.h"

namespace searchsystem {

int CIOStream::Progress(unsigned char percent) {
  if (progressMode_ == streamProgressNone || (progressMode_ == streamProgressEnd && percent != 100))
    return 1;
  const bool isKnown = progressMode_ == streamProgressEnd || progressMode_ == streamProgressEach;
  return isKnown && progressCallback_ != nullptr && progressCallback_(percent) ? 1 : 0;
}

int CIOStream::Release() {
  progressCallback_ = nullptr;
  progressMode_ = streamProgressNone;
  openMode_ = 0;
  return 1;
}

} // namespace searchsystem
