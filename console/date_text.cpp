// Dates as users write and read them.
#include "console/date_text.h"

#include <cstdio>

namespace
{
constexpr int first_year = 1946;
constexpr int last_year = 2045;
constexpr int32_t october = 9;
constexpr int32_t october_of_bcd = 15;

struct Fields {
    int year, month, day, hour, minute, second;
};

int days_of(int year, int month)
{
    constexpr int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap = month == 2 && year % 4 == 0; // between these years each fourth one
    return days[month - 1] + (leap ? 1 : 0);
}

bool is_possible(const Fields &fields)
{
    if (fields.year < first_year || fields.year > last_year || fields.month < 1 || fields.month > 12) return false;
    return fields.day >= 1 && fields.day <= days_of(fields.year, fields.month) && fields.hour < 24 &&
           fields.minute < 60 && fields.second < 60;
}

// Digits stand where the form has them, nothing else elsewhere.
bool has_form(const std::string &text)
{
    constexpr char form[] = "0000-00-00T00:00:00";
    const size_t length = text.size();
    if (length != 10 && length != 16 && length != 19) return false;
    for (size_t i = 0; i < length; i++) {
        const bool digit = text[i] >= '0' && text[i] <= '9';
        const bool same = text[i] == form[i] || (form[i] == 'T' && text[i] == ' ');
        if (form[i] == '0' ? !digit : !same) return false;
    }
    return true;
}

int number_at(const std::string &text, size_t start, size_t digits)
{
    int number = 0;
    for (size_t i = start; i < start + digits && i < text.size(); i++) number = number * 10 + (text[i] - '0');
    return number;
}
}

bool read_date(const std::string &text, TimeRecord *ret_date)
{
    if (!has_form(text)) return false;
    const Fields fields = {number_at(text, 0, 4),  number_at(text, 5, 2),  number_at(text, 8, 2),
                           number_at(text, 11, 2), number_at(text, 14, 2), number_at(text, 17, 2)};
    if (!is_possible(fields)) return false;
    *ret_date = {};
    ret_date->tm_year = fields.year - 1900;
    ret_date->tm_mon = fields.month - 1;
    ret_date->tm_mday = fields.day;
    ret_date->tm_hour = fields.hour;
    ret_date->tm_min = fields.minute;
    ret_date->tm_sec = fields.second;
    return true;
}

std::string date_text(const TimeRecord &date)
{
    if (date.tm_mday < 1 || date.tm_mday > 31) return "none";
    char text[96];
    const int month = date.tm_mon == october_of_bcd ? october : date.tm_mon;
    snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", date.tm_year + 1900, month + 1, date.tm_mday,
             date.tm_hour, date.tm_min, date.tm_sec);
    return text;
}

TimeRecord date_as_stored(TimeRecord date)
{
    if (date.tm_mon == october) date.tm_mon = october_of_bcd;
    return date;
}
