#pragma once

#include "platform/foundation/FileDescriptor.h"

#include <string>

namespace searchsystem {

/// Where the reader program lies: beside this library, or where both are installed, in the libexec
/// folder. Empty when it is in neither place. Throws `std::bad_alloc`.
[[nodiscard]] std::string pathOfReaderProgram();

/// Starts the reader program and answers with the socket to it; none on failure. Any thread.
///
/// The process is no child of this one: nothing that the host does with its children meets it, and
/// no signal comes of it. It inherits nothing but its end of the socket and a pidfd of this
/// process. It ends when the socket does or this process, whether or not a fork of this process
/// lives on. It outlives the thread that has started it.
[[nodiscard]] FileDescriptor startReaderProgram(const std::string &path) noexcept;

} // namespace searchsystem
