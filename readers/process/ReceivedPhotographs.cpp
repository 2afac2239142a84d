#include "readers/process/ReceivedPhotographs.h"

#include <bit>
#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <unistd.h>

namespace searchsystem {

ReceivedPhotographs::~ReceivedPhotographs() {
  used_ = descriptorCount_;
  closeUsed();
}

bool ReceivedPhotographs::receive(int socket) noexcept {
  iovec room{&batch_, sizeof batch_};
  constexpr std::size_t descriptorBytes = mostFiles * sizeof(int);
  alignas(cmsghdr) char control[CMSG_SPACE(descriptorBytes)];
  msghdr message{};
  message.msg_iov = &room;
  message.msg_iovlen = 1;
  message.msg_control = control;
  message.msg_controllen = sizeof control;
  ssize_t size = 0;
  do
    size = recvmsg(socket, &message, 0);
  while (size < 0 && errno == EINTR);
  if (size < 0)
    return false;
  for (cmsghdr *part = CMSG_FIRSTHDR(&message); part != nullptr;
       part = CMSG_NXTHDR(&message, part)) {
    if (part->cmsg_level != SOL_SOCKET || part->cmsg_type != SCM_RIGHTS)
      continue;
    const std::size_t bytes = part->cmsg_len - CMSG_LEN(0);
    std::memcpy(descriptors_.data(), CMSG_DATA(part), bytes);
    descriptorCount_ = bytes / sizeof(int);
  }
  return size == sizeof batch_ && (message.msg_flags & (MSG_TRUNC | MSG_CTRUNC)) == 0 && isWhole();
}

bool ReceivedPhotographs::isWhole() const noexcept {
  return batch_.count <= PhotographBatch::mostPhotographs &&
         batch_.sidecars < std::uint32_t{1} << batch_.count &&
         batch_.count + static_cast<std::size_t>(std::popcount(batch_.sidecars)) ==
             descriptorCount_;
}

ReceivedPhotographs::Next ReceivedPhotographs::next() noexcept {
  closeUsed();
  const bool hasSidecar = (batch_.sidecars >> photographsUsed_++ & 1) != 0;
  Next next;
  next.photograph = nextFile();
  if (hasSidecar)
    next.sidecar = nextFile();
  return next;
}

LentFile ReceivedPhotographs::nextFile() noexcept {
  const std::size_t number = used_++;
  return {descriptors_[number], batch_.sizes[number]};
}

void ReceivedPhotographs::closeUsed() noexcept {
  while (closed_ < used_)
    close(descriptors_[closed_++]);
}

} // namespace searchsystem
