/* Waits from a microsecond upward, and a timer that raises a flag. */
#ifndef TARVO_BASE_TIMING_H
#define TARVO_BASE_TIMING_H

#include <stdint.h>

#include "base/api.h"

#ifdef __cplusplus
#include <atomic>
typedef std::atomic<int32_t> AtomicInt;
extern "C" {
#else
typedef _Atomic int32_t AtomicInt;
#endif

extern TARVO_API AtomicInt global_timeout;         /* 1 when the running time-out has expired */
extern TARVO_API AtomicInt global_timeout_counter; /* milliseconds, -1 without limit, 0 ends the timer thread */
extern TARVO_API uint64_t global_timer;            /* not 0 while the timer thread runs */
extern TARVO_API int32_t os_type;                  /* 2 a system of the old family, 3 the NT family and POSIX */
extern TARVO_API int32_t term_type;                /* 1: a console of the system */

TARVO_API void get_os_type(void);   /* fills os_type */
TARVO_API void get_term_type(void); /* fills term_type */

/* Takes the reference of get_usec_counter. */
TARVO_API void reset_usec_counter(void);
/* Microseconds since the reference, their low 32 bits; 0 on failure. */
TARVO_API uint32_t get_usec_counter(void);
/* Measures the loops a microsecond of an empty loop. Returns 1, or 0 where there is no counter. */
TARVO_API int32_t calibrate_nap(void);
/* Keeps the processor busy for so many microseconds. */
TARVO_API void my_nap(uint32_t microseconds);
/* Sleeps for so many milliseconds; 0 returns at once. */
TARVO_API void my_sleep(uint32_t milliseconds);

/* Asks for a system timer of so many milliseconds, within what the system offers, and gives it back. */
TARVO_API void tune_scheduler(uint32_t resolution);
TARVO_API void restore_scheduler(void);

/* The timer thread. create_timer: 0, or -1 if it can't be started. set_timer raises global_timeout after so many
 * milliseconds: 0, or -1 without a thread. clear_timer: 0, or -1 without a thread. */
TARVO_API int32_t create_timer(void);
TARVO_API void destroy_timer(void);
TARVO_API int32_t set_timer(int32_t milliseconds);
TARVO_API int32_t clear_timer(void);

#ifdef __cplusplus
}
#endif

#endif
