/* Broken-down time as the operating system hands it over: full year, months from 1. */
#ifndef TARVO_PLATFORM_SYSTEM_TIME_H
#define TARVO_PLATFORM_SYSTEM_TIME_H

#include <stdint.h>

typedef struct SystemTime {
    uint16_t year;        /* full year, 1601 to 30827 */
    uint16_t month;       /* 1 to 12 */
    uint16_t day_of_week; /* 0 is Sunday */
    uint16_t day;         /* 1 to 31 */
    uint16_t hour;
    uint16_t minute;
    uint16_t second;
    uint16_t milliseconds;
} SystemTime;

#endif
