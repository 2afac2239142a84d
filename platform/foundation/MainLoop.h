#ifndef PLATFORM_FOUNDATION_MAINLOOP_H
#define PLATFORM_FOUNDATION_MAINLOOP_H

/* The main run loop, for hosts that run a loop of their own.
 *
 * The library reports everything on the main thread, as work of this loop. A host without a loop
 * calls CFRunLoopRun (CoreFoundation.h). A host with one adds the descriptor to it:
 *
 *     int fd = PFMainLoopGetDescriptor();
 *     ... whenever fd is readable, on the main thread: PFMainLoopDispatch();
 *
 * The main thread is the process's first thread, unless PFMainLoopBindToCurrentThread binds
 * another.
 *
 * The library reports the end of a search half a second to one and a half seconds after its last
 * result. A host whose users wait for it, with a sign that turns, may use the virtual clock (see
 * PFMainLoopSetClock) from the start on: the end then follows the last result at once. Nothing else
 * changes: the host's own timers are not of this loop, and the descriptor becomes readable when the
 * clock may jump. */

#include "Symbol.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Makes the calling thread the main thread. Call once, before any other function of the library. */
void PFMainLoopBindToCurrentThread(void) SEARCHSYSTEM_SYMBOL(PFMainLoopBindToCurrentThread);

/* A descriptor that is readable while work or a timer is due, only for poll(2) and the like. It
 * belongs to the loop, is closed on exec, and stays the same for the life of the process. -1 if no
 * descriptor is available; a later call tries again. Main thread. */
int PFMainLoopGetDescriptor(void) SEARCHSYSTEM_SYMBOL(PFMainLoopGetDescriptor);

/* Runs what was due when the call began, for 8 milliseconds at most, without blocking. Remaining
 * and new work keeps the descriptor readable; otherwise it is reset. 1 if something was run, else
 * 0. May be called from inside work of the loop. Main thread. */
int PFMainLoopDispatch(void) SEARCHSYSTEM_SYMBOL(PFMainLoopDispatch);

enum {
  /* Delays take real time. */
  PFMainLoopClockReal = 0,
  /* Delays take no time: when nothing is queued and no thread of the library is working, the clock
   * jumps to the next timer. For tests, and for hosts that have no use for the delays. */
  PFMainLoopClockVirtual = 1
};

/* Chooses the clock of delays; the default, also for unknown values, is PFMainLoopClockReal.
 * Pending delays keep their remaining time. Main thread. */
void PFMainLoopSetClock(int clock) SEARCHSYSTEM_SYMBOL(PFMainLoopSetClock);

/* The time of the clock in use, in seconds since a fixed time. Main thread. */
double PFMainLoopGetTime(void) SEARCHSYSTEM_SYMBOL(PFMainLoopGetTime);

#ifdef __cplusplus
}
#endif

#endif
