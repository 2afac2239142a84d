#include "readers/process/ReceivedRequest.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <sys/socket.h>
#include <unistd.h>

namespace searchsystem {

ReceivedRequest::~ReceivedRequest() {
  for (const int descriptor : {socket_, document_})
    if (descriptor >= 0)
      close(descriptor);
}

ReceivedRequest::Result ReceivedRequest::receive(int requests) noexcept {
  iovec room{&request_, sizeof request_};
  constexpr std::size_t descriptorBytes = 2 * sizeof(int);
  alignas(cmsghdr) char control[CMSG_SPACE(descriptorBytes)];
  msghdr message{};
  message.msg_iov = &room;
  message.msg_iovlen = 1;
  message.msg_control = control;
  message.msg_controllen = sizeof control;
  const ssize_t size = recvmsg(requests, &message, MSG_DONTWAIT | MSG_CMSG_CLOEXEC);
  if (size < 0)
    return errno == EAGAIN || errno == EINTR ? Result::Nothing : Result::Ended;
  // There is room for two descriptors: what else was sent, the kernel has closed.
  for (cmsghdr *part = CMSG_FIRSTHDR(&message); part != nullptr;
       part = CMSG_NXTHDR(&message, part)) {
    if (part->cmsg_level != SOL_SOCKET || part->cmsg_type != SCM_RIGHTS)
      continue;
    int descriptors[2] = {-1, -1};
    std::memcpy(descriptors, CMSG_DATA(part),
                std::min(descriptorBytes, part->cmsg_len - CMSG_LEN(0)));
    socket_ = descriptors[0];
    document_ = descriptors[1];
  }
  if (size == 0 && socket_ < 0)
    return Result::Ended;
  const bool wantsDocument = request_.task == ReaderTask::document;
  const bool isKnown = size == sizeof request_ && request_.task <= ReaderTask::photographs &&
                       socket_ >= 0 && wantsDocument == (document_ >= 0) &&
                       (message.msg_flags & (MSG_TRUNC | MSG_CTRUNC)) == 0 &&
                       request_.mark == requestMark && request_.version == readerVersion;
  return isKnown ? Result::Known : Result::Unknown;
}

} // namespace searchsystem
