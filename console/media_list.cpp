// The rows of the table of media in 80 columns, or as JSON.
#include "console/media_list.h"

#include <cstdio>
#include <string_view>

#include "console/json.h"
#include "console/report.h"
#include "volume/media_table.h"

namespace
{
constexpr size_t line_size = 80; // with the NUL; what is longer is cut

struct MediaField {
    const char *name;
    uint32_t MediaTableRow::*number;
};
constexpr MediaField media_fields[] = {
    {"heads", &MediaTableRow::heads},
    {"sectors", &MediaTableRow::sectors},
    {"tracks", &MediaTableRow::tracks},
    {"system_tracks", &MediaTableRow::system_tracks},
    {"data_tracks", &MediaTableRow::data_tracks},
    {"spare_track", &MediaTableRow::spare_track},
    {"dir_start", &MediaTableRow::dir_start},
    {"alloc_start", &MediaTableRow::alloc_start},
    {"alloc_end", &MediaTableRow::alloc_end},
    {"interleave", &MediaTableRow::interleave},
};

uint64_t bytes_of(const MediaTableRow &row)
{
    return uint64_t{row.tracks} * row.sectors * RECORD_SIZE;
}

void print_text()
{
    output_text("NAME      HD SEC TRACKS     BYTES\n\n");
    for (const MediaTableRow *row = media_table; row->name != nullptr; row++) {
        char line[line_size];
        std::snprintf(line, sizeof line, "%-9s%3lu%4lu%7lu%10llu %s", row->name, static_cast<unsigned long>(row->heads),
                      static_cast<unsigned long>(row->sectors), static_cast<unsigned long>(row->tracks),
                      static_cast<unsigned long long>(bytes_of(*row)), row->description);
        output_format("%s\n", line);
    }
}

void print_json()
{
    Json json;
    JsonObject all(&json);
    all.last("media");
    json.writer.StartArray();
    for (const MediaTableRow *row = media_table; row->name != nullptr; row++) {
        JsonObject medium(&json);
        medium.host_text("name", row->name);
        medium.host_text("description", row->description);
        medium.number("bytes", bytes_of(*row));
        for (const MediaField &field : media_fields) medium.number(field.name, row->*field.number);
        medium.close();
    }
    json.writer.EndArray();
    all.close();
    output_text("\n");
}
}

int print_media_list(bool as_json)
{
    begin_data();
    as_json ? print_json() : print_text();
    return finish_data(exit_done);
}
