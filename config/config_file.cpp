// The configuration file tarvo.ini, line by line: sections in brackets, and lines that belong to the section above
// them.
#include "config/config_file.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>

#include "base/error.h"
#include "base/file_steps.h"
#include "base/log.h"
#include "base/log_pointer.h"
#include "base/output.h"
#include "base/parse_line.h"
#include "config/config_inner.h"
#include "config/custom_inner.h"

namespace
{

constexpr uint32_t null_pointer = 103;
constexpr uint32_t read_error = 302;
constexpr uint32_t most_tokens = 256;

struct Section {
    const char *name;
    bool (*read_line)(const ConfigValues &values, const ConfigLine &line);
};

constexpr Section sections[] = {
    {"[fsinfo]", read_media_line},
    {"[driveinfo]", read_drive_line},
    {"[liftypes]", read_liftype_line},
    {"[defaults]", read_default_line},
};

constinit ConfigFault last_fault = {};

struct Reader {
    FileHandle file;
    const ConfigValues *values;
    const Section *section = nullptr; // null: none has begun
    int32_t number = 0;               // of the line
    // Bytes behind the NUL are those of earlier, longer lines; the last one ends every line.
    std::array<char, CONFIG_LINE_SIZE + 1> line{};
    std::array<char, CONFIG_LINE_SIZE> buffer{};
    std::array<char *, most_tokens> tokens{};
};

enum class Taken : uint8_t { line, end, failure };

// The file layer doesn't tell the end of a file from a failure.
bool is_at_end(FileHandle file)
{
    char next = '\0';
    const int32_t count = file_read(file, &next, 1);
    if (count > 0) set_error(read_error, "");
    return count == 0;
}

// The file layer may read ahead, so the line comes from a buffer of its own.
Taken take_line(Reader *reader)
{
    std::array<char, CONFIG_LINE_SIZE> line;
    const auto length = static_cast<size_t>(file_readline(reader->file, line.data(), line.size()));
    const bool whole = length + 1 == line.size() || (length > 0 && line[length - 1] == '\n');
    if (!whole && !is_at_end(reader->file)) return Taken::failure;
    if (length == 0) return Taken::end;
    std::memcpy(reader->line.data(), line.data(), length + 1);
    reader->number++;
    return Taken::line;
}

void note_fault(const Reader &reader, int32_t offset)
{
    last_fault.line = reader.number;
    last_fault.offset = offset;
    std::memcpy(last_fault.text, reader.line.data(), sizeof last_fault.text);
    last_fault.text[sizeof last_fault.text - 1] = '\0';
    last_fault.text[std::strcspn(last_fault.text, "\r\n")] = '\0';
}

// The mark keeps the tabs ahead of it, so that it stands above the fault.
void print_fault(const ConfigFault &fault)
{
    char text[ERROR_TEXT_SIZE];
    get_error(text);
    output_format("[Tarvo]: %s\n", text);
    const size_t column = std::min(static_cast<size_t>(fault.offset), std::strlen(fault.text));
    for (size_t i = 0; i < column; i++) output_text(fault.text[i] == '\t' ? "\t" : " ");
    output_format("v\n%s\n", fault.text);
    output_flush();
}

const Section *section_named(const char *token)
{
    auto is_named = [token](const Section &section) { return std::strcmp(section.name, token) == 0; };
    const Section *found = std::find_if(std::begin(sections), std::end(sections), is_named);
    return found == std::end(sections) ? nullptr : found;
}

bool read_tokens(Reader *reader, size_t count)
{
    const Section *begun = section_named(reader->tokens[0]);
    if (begun != nullptr) {
        reader->section = begun;
        return true;
    }
    if (reader->section == nullptr) return true;
    const ConfigLine line = {reader->number, {reader->tokens.data(), count}};
    if (reader->section->read_line(*reader->values, line)) return true;
    note_fault(*reader, -1);
    return false;
}

bool read_line(Reader *reader)
{
    const int32_t count = parse_line(reader->number, reader->line.data(), "=", ",", " \t", ";", reader->buffer.data(),
                                     CONFIG_LINE_SIZE, most_tokens, reader->tokens.data());
    if (count < 0) {
        note_fault(*reader, -count);
        print_fault(last_fault);
        return false;
    }
    return count == 0 || read_tokens(reader, static_cast<size_t>(count));
}

int32_t read_lines(FileHandle file, const ConfigValues &values)
{
    Reader reader = {file, &values};
    reader.line.back() = '\n';
    for (;;) {
        const Taken taken = take_line(&reader);
        if (taken != Taken::line) return taken == Taken::end ? 0 : -1;
        if (!read_line(&reader)) return -1;
    }
}

bool has_all(const ConfigValues &values)
{
    const void *const pointers[] = {values.loglevel,
                                    values.board,
                                    values.port,
                                    values.nosleep,
                                    values.fastschedule,
                                    values.system,
                                    values.filesystem,
                                    values.use_file_headers,
                                    values.use_type_names,
                                    values.use_typed_extensions,
                                    values.use_file_conversion};
    return std::find(std::begin(pointers), std::end(pointers), nullptr) == std::end(pointers);
}

}

const ConfigFault &config_fault()
{
    return last_fault;
}

bool is_assign(const char *token)
{
    return token != nullptr && std::strcmp(token, "=") == 0;
}

int32_t read_config_file(FileHandle file, int32_t *ret_loglevel, int32_t *board, uint32_t *port, int32_t *nosleep,
                         int32_t *fastschedule, char *system, int32_t *filesystem, int32_t *use_file_headers,
                         int32_t *use_type_names, int32_t *use_typed_extensions, int32_t *use_file_conversion)
{
    log_file(3,
             "read_config_file(file=%lu, loglevel=%lu, board=%lu, port=%lu, nosleep=%lu, fastschedule=%lu, "
             "system=%lu, filesystem=%lu, use_file_headers=%lu, use_type_names=%lu, use_typed_extensions=%lu, "
             "use_file_conversion=%lu)\n",
             log_handle(file), log_pointer(ret_loglevel), log_pointer(board), log_pointer(port), log_pointer(nosleep),
             log_pointer(fastschedule), log_pointer(system), log_pointer(filesystem), log_pointer(use_file_headers),
             log_pointer(use_type_names), log_pointer(use_typed_extensions), log_pointer(use_file_conversion));
    const ConfigValues values = {ret_loglevel,
                                 board,
                                 port,
                                 nosleep,
                                 fastschedule,
                                 system,
                                 filesystem,
                                 use_file_headers,
                                 use_type_names,
                                 use_typed_extensions,
                                 use_file_conversion};
    last_fault.line = 0;
    last_fault.offset = -1;
    last_fault.text[0] = '\0';
    if (!has_all(values)) {
        set_error(null_pointer, "NULL pointer");
        return -1;
    }
    system[0] = '\0';
    copy_builtin_tables();
    return read_lines(file, values);
}
