// JSON into the engine's output.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

// What the library would assert are mistakes in the order of calls; a program in use carries on.
#define RAPIDJSON_ASSERT(condition) (static_cast<void>(0))
#include <rapidjson/writer.h>

#include "base/file.h"
#include "base/output.h"
#include "base/time_record.h"

// Where the writer puts its characters.
struct JsonStream {
    using Ch = char;
    void Put(char character)
    {
        *output_reserve(1) = character;
        output_advance(1);
    }
    void Flush() {}
};

struct Json {
    JsonStream stream;
    rapidjson::Writer<JsonStream> writer{stream};
};

constexpr size_t json_room = 4096;                   // for the members of an object that are put together at once
constexpr size_t json_longest_text = FILE_PATH_SIZE; // bytes of a text that are looked at
constexpr size_t json_byte_size = 6;                 // that a byte of a text may take: "\u0000"

// A field of a record as a text, which a NUL in it ends earlier.
template <size_t size> std::string_view field_text(const char (&field)[size])
{
    return {field, size};
}

// The value of a member at `target`; they return where it ends. A text ends at its size, or earlier at a NUL.
char *json_put_number(char *target, uint64_t value);
char *json_put_roman8(char *target, std::string_view text);    // a text of an HP machine
char *json_put_host_text(char *target, std::string_view text); // what the host hands over
char *json_put_hex(char *target, std::string_view bytes);
char *json_put_date(char *target, const TimeRecord &date); // null for a date that is none

// An object whose members are put together in the output's own buffer, since there are hundreds of thousands of them;
// the library opens and closes it, with the comma in front of it. Names need no escaping.
class JsonObject
{
  public:
    explicit JsonObject(Json *json_of_all) : json(json_of_all)
    {
        json->writer.StartObject();
        start = end = output_reserve(json_room);
    }

    // Inlined, so that a name is stored as the few words that it is.
    [[gnu::always_inline]] void number(std::string_view name, uint64_t value)
    {
        put_name(name);
        end = json_put_number(end, value);
    }

    void flag(std::string_view name, bool value)
    {
        put_name(name);
        std::memcpy(end, value ? "true " : "false", 5);
        end += value ? 4 : 5;
    }

    void roman8(std::string_view name, std::string_view text)
    {
        put_name(name);
        end = json_put_roman8(end, text);
    }

    void host_text(std::string_view name, std::string_view text)
    {
        put_name(name);
        end = json_put_host_text(end, text);
    }

    void hex(std::string_view name, std::string_view bytes)
    {
        put_name(name);
        end = json_put_hex(end, bytes);
    }

    void date(std::string_view name, const TimeRecord &value)
    {
        put_name(name);
        end = json_put_date(end, value);
    }

    // The last member; the library puts its value.
    void last(std::string_view name)
    {
        put_name(name);
        pass_on();
    }

    // The members so far are text now, and there is new room.
    void pass_on()
    {
        output_advance(static_cast<size_t>(end - start));
        start = end = output_reserve(json_room);
    }

    void close()
    {
        output_advance(static_cast<size_t>(end - start));
        json->writer.EndObject();
    }

  private:
    [[gnu::always_inline]] void put_name(std::string_view name)
    {
        if (!empty) *end++ = ',';
        empty = false;
        *end++ = '"';
        std::memcpy(end, name.data(), name.size());
        end += name.size();
        *end++ = '"';
        *end++ = ':';
    }

    Json *json;
    char *start;
    char *end;
    bool empty = true;
};
