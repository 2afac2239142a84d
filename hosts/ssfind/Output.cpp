#include "hosts/ssfind/Output.h"

#include <cerrno>
#include <poll.h>
#include <string_view>
#include <unistd.h>

namespace searchsystem::ssfind {

Output::Output(int descriptor) : descriptor_(descriptor) { text_.reserve(capacity + capacity / 8); }

void Output::flush() noexcept {
  std::string_view rest = text_;
  while (!rest.empty() && error_ == 0) {
    const ssize_t written = write(descriptor_, rest.data(), rest.size());
    if (written >= 0) {
      rest.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno == EAGAIN) {
      pollfd writable{descriptor_, POLLOUT, 0};
      poll(&writable, 1, -1);
    } else if (errno != EINTR) {
      error_ = errno;
    }
  }
  text_.clear();
}

void Output::checkReader() noexcept {
  pollfd reader{descriptor_, 0, 0};
  if (error_ == 0 && poll(&reader, 1, 0) == 1 && (reader.revents & POLLERR) != 0)
    error_ = EPIPE;
}

} // namespace searchsystem::ssfind
