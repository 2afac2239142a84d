#ifndef PLATFORM_FOUNDATION_LOCALTIME_H
#define PLATFORM_FOUNDATION_LOCALTIME_H

/* Local time, for hosts that read dates as the library does, in the C library's time zone. */

#include "Symbol.h"

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Seconds from 1970-01-01 to 2001-01-01, both 00:00 UTC. */
enum { PFSecondsFrom1970To2001 = 978307200 };

/* What a local time may mean around the time at which clocks are set, all in seconds since
 * 1970-01-01 00:00 UTC. Where clocks are set back by an hour, they show an hour twice; where they
 * are set forward, they skip one. */
typedef struct {
  /* The time by the offset from UTC before clocks are set, and by the one after. They are equal
   * where clocks are not set within 18 hours of it. */
  int64_t byOldOffset;
  int64_t byNewOffset;
  /* When clocks are set; later than both where they are not. */
  int64_t change;
} PFLocalTime;

/* The meanings of the local time `time`, in seconds since 1970 as if it were UTC. Any thread. */
PFLocalTime PFLocalTimeMake(int64_t time) SEARCHSYSTEM_SYMBOL(PFLocalTimeMake);

#ifdef __cplusplus
}
#endif

#endif
