#include "platform/content/SendDescriptors.h"

#include <cassert>
#include <cerrno>
#include <cstring>
#include <sys/socket.h>

namespace searchsystem {

bool sendDescriptors(int socket, const void *message, std::size_t size,
                     std::span<const int> descriptors) noexcept {
  assert(!descriptors.empty() && descriptors.size() <= mostSentDescriptors);
  iovec content{const_cast<void *>(message), size};
  alignas(cmsghdr) char control[CMSG_SPACE(mostSentDescriptors * sizeof(int))] = {};
  msghdr header{};
  header.msg_iov = &content;
  header.msg_iovlen = 1;
  header.msg_control = control;
  header.msg_controllen = CMSG_SPACE(descriptors.size_bytes());
  cmsghdr *const part = CMSG_FIRSTHDR(&header);
  part->cmsg_level = SOL_SOCKET;
  part->cmsg_type = SCM_RIGHTS;
  part->cmsg_len = CMSG_LEN(descriptors.size_bytes());
  std::memcpy(CMSG_DATA(part), descriptors.data(), descriptors.size_bytes());
  ssize_t sent = 0;
  do
    sent = sendmsg(socket, &header, MSG_NOSIGNAL | MSG_DONTWAIT);
  while (sent < 0 && errno == EINTR);
  return sent == static_cast<ssize_t>(size);
}

} // namespace searchsystem
