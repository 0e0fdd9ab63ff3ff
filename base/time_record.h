/* The broken-down time of all dates in memory. */
#ifndef TARVO_BASE_TIME_RECORD_H
#define TARVO_BASE_TIME_RECORD_H

#include <stdint.h>

typedef struct TimeRecord {
    int32_t tm_sec;
    int32_t tm_min;
    int32_t tm_hour;
    int32_t tm_mday; /* 1 to 31, 0: no date */
    int32_t tm_mon;  /* 0 to 11; 15 for an October read from BCD */
    int32_t tm_year; /* minus 1900 */
    int32_t tm_wday; /* 0 is Sunday */
    int32_t tm_yday;
    int32_t tm_isdst;
} TimeRecord;

#endif
