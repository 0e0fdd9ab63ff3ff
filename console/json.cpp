// JSON into the engine's output: texts, dates and numbers as the records have them.
#include "console/json.h"

#include <cstring>

#include "base/file.h"
#include "base/output.h"
#include "console/roman8.h"

namespace
{
constexpr size_t longest_text = FILE_PATH_SIZE;
constexpr size_t escape_bytes = 6; // "\u0000"
static_assert(longest_text * escape_bytes + 2 < JsonStream::piece, "any text has room in one piece");
constexpr char hex_digits[] = "0123456789ABCDEF";

// A control character as JSON writes it. Those of the second set and DEL needn't be escaped there, but a terminal
// would act on them.
char *put_control(char *target, uint8_t code)
{
    const char text[escape_bytes] = {'\\', 'u', '0', '0', hex_digits[code >> 4], hex_digits[code & 15]};
    std::memcpy(target, text, escape_bytes);
    return target + escape_bytes;
}

// The text with its quotes; target has room for escape_bytes for each byte that the text had before it was UTF-8, and
// for the quotes.
size_t quote(char *target, std::string_view utf8)
{
    char *position = target;
    *position++ = '"';
    for (size_t index = 0; index < utf8.size(); index++) {
        auto code = static_cast<uint8_t>(utf8[index]);
        bool second_set = code == 0xC2 && index + 1 < utf8.size() && static_cast<uint8_t>(utf8[index + 1]) < 0xA0;
        if (second_set) {
            position = put_control(position, static_cast<uint8_t>(utf8[++index]));
        } else if (code < 0x20 || code == 0x7F) {
            position = put_control(position, code);
        } else {
            if (code == '"' || code == '\\') *position++ = '\\';
            *position++ = utf8[index];
        }
    }
    *position++ = '"';
    return static_cast<size_t>(position - target);
}

using Conversion = size_t (*)(char *target, std::string_view source);

// Almost all texts need neither conversion nor escaping; how many characters at the front of this one don't.
size_t copy_plain(char *target, std::string_view text)
{
    size_t count = 0;
    for (char byte : text) {
        if (byte < ' ' || byte > '~' || byte == '"' || byte == '\\') break;
        target[count++] = byte;
    }
    return count;
}

void put_text(Json *json, std::string_view name, std::string_view text, Conversion conversion)
{
    text = text.substr(0, longest_text);
    json_name(json, name);
    char *at = json->stream.room(text.size() * escape_bytes + 2);
    *at = '"';
    if (copy_plain(at + 1, text) == text.size()) {
        at[text.size() + 1] = '"';
        json->stream.position += text.size() + 2;
        return;
    }
    char utf8[longest_text * utf8_bytes];
    json->stream.position += quote(at, std::string_view(utf8, conversion(utf8, text)));
}

bool in_range(int32_t value, int32_t least, int32_t most)
{
    return value >= least && value <= most;
}

int32_t true_month(int32_t month)
{
    constexpr int32_t october_of_bcd = 15;
    return month == october_of_bcd ? 10 : month + 1;
}

bool is_date(const TimeRecord &date)
{
    return in_range(date.tm_mday, 1, 31) && in_range(true_month(date.tm_mon), 1, 12) &&
           in_range(date.tm_year, -1900, 9999 - 1900) && in_range(date.tm_hour, 0, 23) &&
           in_range(date.tm_min, 0, 59) && in_range(date.tm_sec, 0, 59);
}

char *put_digits(char *target, int32_t value, size_t digits)
{
    for (size_t index = digits; index > 0; index--) {
        target[index - 1] = static_cast<char>('0' + value % 10);
        value /= 10;
    }
    return target + digits;
}
}

void JsonStream::next_piece()
{
    Flush();
    start = output_reserve(JsonStream::piece);
    position = start;
    end = start + JsonStream::piece;
}

void JsonStream::Flush()
{
    if (start != nullptr) output_advance(static_cast<size_t>(position - start));
    start = position = end = nullptr;
}

void json_begin_object(Json *json)
{
    json->writer.StartObject();
    json->first_member = true;
}

void json_end_object(Json *json)
{
    json->writer.EndObject();
    json->first_member = false;
}

void json_roman8(Json *json, std::string_view name, std::string_view text)
{
    put_text(json, name, text, roman8_to_utf8);
}

void json_host_text(Json *json, std::string_view name, std::string_view text)
{
    put_text(json, name, text, repair_utf8);
}

void json_hex(Json *json, std::string_view name, std::string_view bytes)
{
    bytes = bytes.substr(0, longest_text);
    json_name(json, name);
    char *at = json->stream.room(2 * bytes.size() + 2);
    *at++ = '"';
    for (char byte : bytes) {
        auto code = static_cast<uint8_t>(byte);
        *at++ = hex_digits[code >> 4];
        *at++ = hex_digits[code & 15];
    }
    *at++ = '"';
    json->stream.position = at;
}

void json_date(Json *json, std::string_view name, const TimeRecord &date)
{
    json_name(json, name);
    if (!is_date(date)) {
        json->stream.append("null");
        return;
    }
    char text[] = "\"0000-00-00T00:00:00\"";
    char *position = put_digits(text + 1, date.tm_year + 1900, 4) + 1;
    position = put_digits(position, true_month(date.tm_mon), 2) + 1;
    position = put_digits(position, date.tm_mday, 2) + 1;
    position = put_digits(position, date.tm_hour, 2) + 1;
    position = put_digits(position, date.tm_min, 2) + 1;
    put_digits(position, date.tm_sec, 2);
    json->stream.append({text, sizeof text - 1});
}

void json_end(Json *json)
{
    json->stream.Put('\n');
    json->stream.Flush();
}

std::string_view field_text(const char *field, size_t size)
{
    const void *end = std::memchr(field, 0, size);
    return {field, end == nullptr ? size : static_cast<size_t>(static_cast<const char *>(end) - field)};
}
