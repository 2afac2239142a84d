// Sends a reader program any request, and a photograph worker any photographs, with any number of
// descriptors: only whole ones of this version are known, and no descriptor is left behind.
//
// The first byte is the number of descriptors; the rest is the request, laid over a good one if the
// byte's highest bit is set.

#include "readers/process/ReceivedPhotographs.h"
#include "readers/process/ReceivedRequest.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using namespace searchsystem;

constexpr std::size_t mostDescriptors = 4;

void require(bool condition) {
  if (!condition)
    std::abort();
}

void sendTo(int socket, std::string bytes, std::size_t count) {
  int descriptors[mostDescriptors];
  std::fill(std::begin(descriptors), std::end(descriptors), STDERR_FILENO);
  iovec content{bytes.data(), bytes.size()};
  alignas(cmsghdr) char control[CMSG_SPACE(sizeof descriptors)] = {};
  msghdr message{};
  message.msg_iov = &content;
  message.msg_iovlen = 1;
  if (count > 0) {
    message.msg_control = control;
    message.msg_controllen = CMSG_SPACE(sizeof(int) * count);
    cmsghdr *const part = CMSG_FIRSTHDR(&message);
    part->cmsg_level = SOL_SOCKET;
    part->cmsg_type = SCM_RIGHTS;
    part->cmsg_len = CMSG_LEN(sizeof(int) * count);
    std::memcpy(CMSG_DATA(part), descriptors, sizeof(int) * count);
  }
  require(sendmsg(socket, &message, 0) == static_cast<ssize_t>(bytes.size()));
}

int nextDescriptor() {
  const int descriptor = dup(STDERR_FILENO);
  close(descriptor);
  return descriptor;
}

template <class Message> std::string laidOver(const Message &good, const std::string &bytes) {
  std::string base(reinterpret_cast<const char *>(&good), sizeof good);
  return base.replace(0, std::min(bytes.size(), base.size()), bytes, 0, base.size());
}

void sendRequestTo(int sender, int receiver, const std::string &bytes, std::size_t count) {
  sendTo(sender, bytes, count);
  ReceivedRequest received;
  const auto result = received.receive(receiver);
  const ReaderRequest &request = received.request();
  const bool fits = (request.task == ReaderTask::document && count == 2) ||
                    (request.task == ReaderTask::photographs && count == 1);
  const bool isKnown = bytes.size() == sizeof(ReaderRequest) && fits &&
                       request.mark == requestMark && request.version == readerVersion;
  require(isKnown == (result == ReceivedRequest::Result::Known));
  require((received.socket() >= 0) == (count > 0));
  require(isKnown || result == ReceivedRequest::Result::Unknown || bytes.empty());
  ReceivedRequest another;
  require(another.receive(receiver) == ReceivedRequest::Result::Nothing);
}

void sendPhotographsTo(int sender, int receiver, const std::string &bytes, std::size_t count) {
  sendTo(sender, bytes, count);
  ReceivedPhotographs received;
  if (!received.receive(receiver))
    return;
  PhotographBatch batch;
  require(bytes.size() == sizeof batch);
  std::memcpy(&batch, bytes.data(), sizeof batch);
  require(received.count() + static_cast<std::size_t>(std::popcount(batch.sidecars)) == count);
  for (std::size_t i = 0; i < received.count(); ++i) {
    const ReceivedPhotographs::Next next = received.next();
    require(next.photograph.descriptor >= 0);
    require((next.sidecar.descriptor >= 0) == ((batch.sidecars >> i & 1) != 0));
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  if (size == 0)
    return 0;
  const std::size_t count = (data[0] & 0x7FU) % (mostDescriptors + 1);
  const std::string bytes(reinterpret_cast<const char *>(data) + 1, size - 1);
  const bool isLaidOver = (data[0] & 0x80U) != 0;

  int ends[2];
  require(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) == 0);
  const int next = nextDescriptor();
  sendRequestTo(ends[0], ends[1], isLaidOver ? laidOver(ReaderRequest(), bytes) : bytes, count);
  PhotographBatch batch;
  batch.count = static_cast<std::uint32_t>(count);
  sendPhotographsTo(ends[0], ends[1], isLaidOver ? laidOver(batch, bytes) : bytes, count);
  require(nextDescriptor() == next);
  close(ends[0]);
  ReceivedRequest last;
  require(last.receive(ends[1]) == ReceivedRequest::Result::Ended);
  close(ends[1]);
  return 0;
}
