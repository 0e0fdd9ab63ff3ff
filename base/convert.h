/* Small pure conversions: big-endian words, BCD, the dates and characters of HP volumes, numbers in text. */
#ifndef TARVO_BASE_CONVERT_H
#define TARVO_BASE_CONVERT_H

#include <stdint.h>

#include "base/api.h"
#include "base/time_record.h"
#include "platform/system_time.h"

#ifdef __cplusplus
extern "C" {
#endif

extern TARVO_API const char *const month[12]; /* "Jan" to "Dec" */

/* Big-endian numbers at any address. A null pointer reads as 0 and ignores what is stored. */
TARVO_API uint16_t get_word(const uint8_t *bytes);
TARVO_API uint32_t get_dword(const uint8_t *bytes);
TARVO_API void set_word(uint8_t *bytes, uint16_t value);
TARVO_API void set_dword(uint8_t *bytes, uint32_t value);

/* Eight characters "0" or "1", highest bit first, and a NUL. Returns the buffer (9 bytes), null for a null buffer. */
TARVO_API char *get_binary_string(uint8_t value, char *buffer);

/* Packed BCD: high nibble * 10 + low nibble, and back. Nothing is checked. */
TARVO_API uint8_t bcd2dec(uint8_t value);
TARVO_API uint8_t dec2bcd(uint8_t value);

/* a to z become A to Z, in place. */
TARVO_API void to_uppercase(char *text);

/* Takes blanks and tabs from both ends, in place. What had leading blanks keeps its old tail: "  AB" becomes "ABAB". */
TARVO_API void trim(char *text);

/* Numbers in text: blanks, "0x" for hexadecimal, digits; a letter a to f makes it hexadecimal too. The number ends at
 * a blank or a line end. Return 0, or -1 for no number; ret_value is then unchanged. An empty text is 0. Too large a
 * number gives the largest. Errors set: none. */
TARVO_API int32_t safe_strtoul(const char *text, uint32_t *ret_value);
TARVO_API int32_t safe_strtoui(const char *text, uint16_t *ret_value); /* above 65535 fails */
TARVO_API int32_t safe_strtouc(const char *text, uint8_t *ret_value);  /* above 255 fails */
TARVO_API int32_t safe_strtoi(const char *text, int32_t *ret_value);   /* with one leading "-" */

/* Reads standard input up to a line feed, which isn't stored, or size - 1 characters. Returns the buffer, null for a
 * null buffer or size 0. */
TARVO_API char *safe_gets(char *buffer, uint32_t size);

/* The local time now: year, month, weekday, day, hour, minute and second; the other fields are 0. */
TARVO_API void get_current_datetime(TimeRecord *ret_time);

/* LIF dates, six bytes of packed BCD: year, month, day, hour, minute, second. A raw year byte above $45 is 19xx, others
 * are 20xx. October (BCD 10) reads as month 15. */
TARVO_API void datetime2tm(TimeRecord *ret_time, const uint8_t *bytes);
TARVO_API void tm2datetime(uint8_t *ret_bytes, const TimeRecord *time);

/* Julian day number of a Gregorian date, and back. */
TARVO_API int32_t date2jd(int32_t day, int32_t month_number, int32_t year);
TARVO_API void jd2greg(int32_t jd, int32_t *ret_year, int32_t *ret_month, int32_t *ret_day);

/* SDF dates, eight bytes: Julian day number, seconds of the day. Both 0: the record stays as it is. */
TARVO_API void time_ios2tm(TimeRecord *time, const uint8_t *bytes);
/* Not the inverse: the day word is date2jd(year, month, day) with the fields in that order, the seconds word
 * hour * 65536 + minute * 60 + second. */
TARVO_API void tm2time_ios(uint8_t *ret_bytes, const TimeRecord *time);

/* Packed date and time of the host: second / 2, minute at bit 5, hour 11, day 16, month 21, year - 1980 at 25.
 * Before 1980: $210000. */
TARVO_API uint32_t tm2wcxtime(const TimeRecord *time);

TARVO_API void tm2SystemTime(SystemTime *ret_time, const TimeRecord *time);
TARVO_API void SystemTime2tm(TimeRecord *ret_time, const SystemTime *time);

/* Date and time as text, " 3-Oct-99" and " 9:05"; with flag not 0 "03-Oct-99" and "09:05". A day outside 1 to 31
 * gives nine and five blanks. ret_date and ret_time have 32 bytes. Nothing happens for a null pointer. */
TARVO_API void get_datetime_strings(const TimeRecord *time, char *ret_date, char *ret_time, int32_t flag);

/* One character between the HP set (Roman-8) and the host's. What has no partner stays. */
TARVO_API uint8_t hp2win(uint8_t character);
TARVO_API uint8_t win2hp(uint8_t character);

/* Whole texts. With filter, hp2win makes "_" of what a host's file name can't hold (bytes below 32 and above 126,
 * quotes, \ / : ? * < > |); win2hp makes "_" of quote and colon and leaves blanks out. target has room for the
 * source's length and a NUL; nothing happens for a null pointer. */
TARVO_API void string_hp2win(char *target, const char *source, int32_t filter);
TARVO_API void string_win2hp(char *target, const char *source, int32_t filter);

#ifdef __cplusplus
}
#endif

#endif
