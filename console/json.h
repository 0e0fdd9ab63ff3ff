// JSON into the engine's output.
#pragma once

#include <charconv>
#include <cstdint>
#include <cstring>
#include <string_view>

// What the library would assert are mistakes in the order of calls; a program in use carries on.
#define RAPIDJSON_ASSERT(condition) (static_cast<void>(0))
#include <rapidjson/writer.h>

#include "base/time_record.h"

// Where the writer puts its characters: into the engine's output buffer, a piece at a time.
struct JsonStream {
    using Ch = char;
    static constexpr size_t piece = 4096; // the most that can be had at once
    void next_piece();
    void Put(char character)
    {
        if (position == end) next_piece();
        *position++ = character;
    }
    void Flush();
    // Room for so many characters at `position`, less than a piece.
    char *room(size_t count)
    {
        if (static_cast<size_t>(end - position) < count) next_piece();
        return position;
    }
    void append(std::string_view text) // less than a piece
    {
        std::memcpy(room(text.size()), text.data(), text.size());
        position += text.size();
    }

    char *start = nullptr;
    char *position = nullptr;
    char *end = nullptr;
};

// The writer asks for room once for a whole text (less than a piece), then puts its characters without looking.
inline void PutReserve(JsonStream &stream, size_t count)
{
    if (static_cast<size_t>(stream.end - stream.position) < count) stream.next_piece();
}
inline void PutUnsafe(JsonStream &stream, char character)
{
    *stream.position++ = character;
}

// The library opens and closes objects and arrays and divides the elements of arrays; the members of an object go
// straight into the stream, since there are hundreds of thousands of them.
struct Json {
    JsonStream stream;
    rapidjson::Writer<JsonStream> writer{stream};
    bool first_member = true;
};

void json_begin_object(Json *json);
void json_end_object(Json *json);

// What follows is its value; a name needs no escaping.
inline void json_name(Json *json, std::string_view name)
{
    char *at = json->stream.room(name.size() + 4);
    if (!json->first_member) *at++ = ',';
    json->first_member = false;
    *at++ = '"';
    std::memcpy(at, name.data(), name.size());
    at += name.size();
    *at++ = '"';
    *at++ = ':';
    json->stream.position = at;
}

// A name and its value.
inline void json_number(Json *json, std::string_view name, uint64_t value)
{
    constexpr size_t most_digits = 20;
    json_name(json, name);
    char *at = json->stream.room(most_digits);
    json->stream.position = std::to_chars(at, at + most_digits, value).ptr;
}
inline void json_flag(Json *json, std::string_view name, bool value)
{
    json_name(json, name);
    json->stream.append(value ? std::string_view("true") : std::string_view("false"));
}
void json_roman8(Json *json, std::string_view name, std::string_view text);    // a text of an HP machine
void json_host_text(Json *json, std::string_view name, std::string_view text); // what the host hands over
void json_hex(Json *json, std::string_view name, std::string_view bytes);
void json_date(Json *json, std::string_view name, const TimeRecord &date); // null for a date that is none

void json_end(Json *json); // the line end, and all is on its way

// The text in a field of so many bytes, which a NUL may end earlier.
std::string_view field_text(const char *field, size_t size);
