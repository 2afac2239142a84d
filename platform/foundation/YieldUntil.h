#pragma once

/// Tells the processor that the thread is waiting in a loop.
inline void pauseProcessor() noexcept {
#if defined(__x86_64__) || defined(__i386__)
  __builtin_ia32_pause();
#elif defined(__aarch64__)
  asm volatile("yield");
#endif
}

/// Lets other threads run for a moment. False, at once, while that is no good idea: on a machine
/// that is busy with other programs the moment can be a whole time slice. One that was puts an end
/// to this for a fifth of a second.
[[nodiscard]] bool yieldProcessor() noexcept;

/// A microsecond or two.
inline constexpr int momentaryPauses = 100;
/// Some tens of microseconds: worth it where hand-overs follow each other at once.
inline constexpr int patientPauses = 2000;

/// Waits for another thread that is expected to be quick: for a moment in a loop, then
/// by letting other threads run, a bounded number of times. Answers whether `isReady` has come to
/// answer true. `pauses` is how often to look in the loop. To be called before going to sleep: to
/// fall asleep and be woken costs more than most hand-overs between threads take.
template <class IsReady>
bool yieldUntil(int mostTimes, IsReady isReady, int pauses = momentaryPauses) noexcept {
  for (int i = 0; i < pauses; ++i) {
    if (isReady())
      return true;
    pauseProcessor();
  }
  for (int i = 0; i < mostTimes; ++i)
    if (isReady() || !yieldProcessor())
      break;
  return isReady();
}
