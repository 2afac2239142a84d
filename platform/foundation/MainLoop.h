#ifndef PLATFORM_FOUNDATION_MAINLOOP_H
#define PLATFORM_FOUNDATION_MAINLOOP_H

/* The main run loop, for hosts that run a loop of their own.
 *
 * Everything that the library reports arrives on the main thread, as work of this loop. A host
 * without a loop calls CFRunLoopRun (CoreFoundation.h). A host with one adds the descriptor to it:
 *
 *     int fd = PFMainLoopGetDescriptor();
 *     ... whenever fd is readable, on the main thread: PFMainLoopDispatch();
 *
 * The main thread is the process's first thread, unless PFMainLoopBindToCurrentThread has named
 * another. */

#ifdef __cplusplus
extern "C" {
#endif

/* Makes the calling thread the main thread. To be called before any other function of the library,
 * once. */
void PFMainLoopBindToCurrentThread(void);

/* A descriptor that is readable while work or a timer is due, to be watched with poll(2) or its
 * kin and for nothing else. It belongs to the loop, is closed on exec, and stays the same for the
 * life of the process. -1 when no descriptor could be had; a later call tries again.
 * Main thread. */
int PFMainLoopGetDescriptor(void);

/* Runs what was due when the call began, for 8 milliseconds at most, without waiting for anything.
 * What is left, and what arrives meanwhile, keeps the descriptor readable; it is reset otherwise.
 * 1 when something was run, else 0. May be called from inside work of the loop. Main thread. */
int PFMainLoopDispatch(void);

enum {
  /* Delays take their time. */
  PFMainLoopClockReal = 0,
  /* Delays take no time: when nothing is queued and no thread of the library is at work, the clock
   * jumps to the next timer. For tests, and for programs that only wait for a search to end. */
  PFMainLoopClockVirtual = 1
};

/* Chooses the clock of delays; PFMainLoopClockReal at the start, and any unknown value means it.
 * A delay that is running keeps what is left of it. Main thread. */
void PFMainLoopSetClock(int clock);

/* The time of the clock in use, in seconds from a moment that does not change. Main thread. */
double PFMainLoopGetTime(void);

#ifdef __cplusplus
}
#endif

#endif
