/* Find records of the operating system, in the layout of its ANSI and its wide file calls. */
#ifndef TARVO_PLATFORM_FIND_DATA_H
#define TARVO_PLATFORM_FIND_DATA_H

#include <stdint.h>
#include <wchar.h>

typedef struct FindDataA { /* 320 bytes */
    uint32_t attributes;
    uint32_t creation_time[2]; /* low word first, units of 100 ns since 1601 */
    uint32_t access_time[2];
    uint32_t write_time[2];
    uint32_t size_high;
    uint32_t size_low;
    uint32_t reserved[2];
    char name[260];
    char alternate_name[14];
} FindDataA;

typedef struct FindDataW { /* 592 bytes where wchar_t has 16 bits */
    uint32_t attributes;
    uint32_t creation_time[2];
    uint32_t access_time[2];
    uint32_t write_time[2];
    uint32_t size_high;
    uint32_t size_low;
    uint32_t reserved[2];
    wchar_t name[260];
    wchar_t alternate_name[14];
} FindDataW;

#endif
