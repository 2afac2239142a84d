#include "platform/content/Cancellation.h"

#include <sys/socket.h>

namespace searchsystem {

void Cancellation::cancel() noexcept {
  isCancelled_.store(true);
  const LockGuard guard(lock_);
  // A process that works for a socket nobody listens to is killed.
  for (const Awaited *awaited = awaited_; awaited != nullptr; awaited = awaited->next_)
    shutdown(awaited->socket_, SHUT_RDWR);
}

Cancellation::Awaited::Awaited(Cancellation &cancellation, int socket) noexcept
    : cancellation_(cancellation), socket_(socket) {
  const LockGuard guard(cancellation_.lock_);
  next_ = cancellation_.awaited_;
  cancellation_.awaited_ = this;
  // `cancel` may have been here before.
  if (cancellation_.isCancelled())
    shutdown(socket_, SHUT_RDWR);
}

Cancellation::Awaited::~Awaited() {
  const LockGuard guard(cancellation_.lock_);
  Awaited **at = &cancellation_.awaited_;
  while (*at != this)
    at = &(*at)->next_;
  *at = next_;
  // The process at work for it learns that nobody listens, also where a fork of this process holds
  // the socket.
  shutdown(socket_, SHUT_RDWR);
}

} // namespace searchsystem
