#pragma once

#include <cstddef>
#include <span>

namespace searchsystem {

/// The most descriptors that one message may carry here.
constexpr std::size_t mostSentDescriptors = 32;

/// Sends a message over a socket, with descriptors, without waiting. The receiver gets descriptors
/// of its own for the same open files. Whether it was sent. Any thread.
[[nodiscard]] bool sendDescriptors(int socket, const void *message, std::size_t size,
                                   std::span<const int> descriptors) noexcept;

} // namespace searchsystem
