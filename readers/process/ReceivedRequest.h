#pragma once

#include "readers/ReaderProtocol.h"

#include <utility>

namespace searchsystem {

/// A request, with the descriptors that came with it.
///
/// Ownership: closes its descriptors. Threads: one at a time.
class ReceivedRequest {
public:
  enum class Result {
    /// There is none, for now.
    Nothing,
    Known,
    /// Of another version, or not whole. There may be a socket to say so.
    Unknown,
    /// Nobody will send another.
    Ended,
  };

  ReceivedRequest() noexcept = default;
  ~ReceivedRequest();
  ReceivedRequest(const ReceivedRequest &) = delete;
  ReceivedRequest &operator=(const ReceivedRequest &) = delete;

  /// Takes the next request from a socket, without waiting. To be called once.
  [[nodiscard]] Result receive(int requests) noexcept;

  [[nodiscard]] const ReaderRequest &request() const noexcept { return request_; }
  /// -1 for what did not come.
  [[nodiscard]] int socket() const noexcept { return socket_; }
  [[nodiscard]] int document() const noexcept { return document_; }
  /// Gives the socket away.
  [[nodiscard]] int takeSocket() noexcept { return std::exchange(socket_, -1); }

private:
  ReaderRequest request_;
  int socket_ = -1;
  int document_ = -1;
};

} // namespace searchsystem
