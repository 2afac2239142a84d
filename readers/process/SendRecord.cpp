#include "readers/process/SendRecord.h"

#include "readers/process/Seal.h"

#include <cerrno>
#include <sys/socket.h>

namespace searchsystem {

bool sendRecord(const char *record, std::size_t size) noexcept {
  ssize_t sent = 0;
  do
    sent = send(answerDescriptor, record, size, MSG_NOSIGNAL);
  while (sent < 0 && errno == EINTR);
  return sent == static_cast<ssize_t>(size);
}

} // namespace searchsystem
