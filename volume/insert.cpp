// Files of the host into files of an open medium: the entry first, then the records.
#include "volume/insert.h"

#include <cstring>
#include <new>
#include <string>
#include <string_view>

#include "base/convert.h"
#include "base/error.h"
#include "base/file_inner.h"
#include "base/log.h"
#include "base/log_pointer.h"
#include "platform/platform.h"
#include "volume/content/content.h"
#include "volume/entries.h"
#include "volume/filetypes.h"
#include "volume/header.h"
#include "volume/image_access.h"
#include "volume/insert_inner.h"
#include "volume/insert_source.h"
#include "volume/insert_transfer.h"
#include "volume/names.h"
#include "volume/navigate.h"
#include "volume/new_entry.h"
#include "volume/operations.h"
#include "volume/scratch.h"
#include "volume/type_text.h"

namespace
{
constexpr uint32_t default_record_len = 128;
constexpr uint64_t addressable_bytes = uint64_t{1} << 32;
constexpr uint32_t text_bytes = 64 * 1024;

struct Work {
    MediaDescriptor *md;
    FileInfo *info;
    InsertSource *source;
    const InsertOrder *order;
    std::string name;   // host path from which the name on the volume is made
    bool converting;    // the source is text
    uint64_t start = 0; // of the file's own bytes in the source
    bool cut = false;   // something of the source stays behind
    Insertion done = {};
};

int32_t file_error(uint32_t number, const char *name)
{
    set_error(number, "file \"%s\"", name);
    return -1;
}

// ---- what the file will be ---------------------------------------------------------------------------------

// A text's own ending says that it is one, and goes.
void take_text_ending(Work *work)
{
    constexpr uint16_t asked = INSERT_CONVERT | INSERT_TXT;
    if ((work->order->flags & asked) != asked) return;
    const size_t dot = work->name.rfind('.');
    if (dot == std::string::npos || dot == 0) return;
    const std::string_view ending = std::string_view(work->name).substr(dot);
    if (ending != ".txt" && ending != ".TXT") return;
    work->name.resize(dot);
    work->converting = true;
}

void take_default_type(const MediaDescriptor *md, FileInfo *info)
{
    char text[type_text_size];
    type_text(info, text);
    if (info->type != 0 || text[0] != '\0') return;
    const char *type = md->format == FORMAT_LIF ? "ASCII" : "DATA";
    set_type_text(info, type);
    set_filetype(md->format, type, nullptr, &info->type);
}

void complete_entry(Work *work)
{
    FileInfo *info = work->info;
    take_default_type(work->md, info);
    info->record_len = 0;
    info->lif_impl[4] = info->lif_impl[5] = 0;
    char system[sizeof info->system_string + 1] = {};
    std::memcpy(system, info->system_string, sizeof info->system_string);
    process_filepath(work->md, info, work->name.c_str(), system, 1);
    add_file_info(work->md->format, info);
    info->size = static_cast<uint32_t>(work->source->size);
}

// What stands ahead of the file's own bytes and tells about it.
int32_t take_header(Work *work)
{
    const FileHeader *header = work->converting ? nullptr : file_header(work->md->use_file_headers);
    if (header == nullptr) return 0;
    uint8_t bytes[most_header_bytes];
    const int32_t count = read_source(work->source, bytes, header->bytes);
    if (count < 0) return file_error(300, work->order->name);
    const bool whole = count == static_cast<int32_t>(header->bytes);
    FileInfo *info = work->info;
    if (!whole || !header->parse(bytes, info)) {
        if (header->checked) log_file(2, "Error in LIF file header\n");
        return 0;
    }
    work->start = header->bytes;
    // Kept: behind this header a file comes out two records shorter.  [KeepsShorterFileBehindHeader]
    info->size = info->size < header->taken_off ? 0 : info->size - header->taken_off;
    return 0;
}

int32_t make_way(Work *work)
{
    MediaDescriptor *md = work->md;
    char *name = work->info->name;
    string_win2hp(name, name, 1);
    FileInfo *old = find_listed(md, work->order->survey, name);
    if (old == nullptr) return 0;
    if ((work->order->flags & INSERT_OVERWRITE) == 0) return file_error(210, name);
    if (check_entry(md, work->info) < 0) return -1;
    image_delete_file(md, old, 0);
    if (work->order->survey != nullptr) *work->order->survey = {};
    work->done.deleted_old = true;
    return 0;
}

// ---- what is written ---------------------------------------------------------------------------------------

int32_t make_records(Work *work)
{
    FileInfo *info = work->info;
    if (info->record_len == 0) info->record_len = default_record_len;
    const uint64_t record_bytes = uint64_t{info->record_len} * 2;
    info->records = static_cast<uint32_t>((record_bytes + info->size - 1) / record_bytes);
    work->done.entry = create_entry(work->md, info, work->order->survey);
    return work->done.entry == nullptr ? -1 : 0;
}

int32_t write_source(Work *work, InsertSource *source)
{
    if (make_records(work) < 0) return -1;
    if (work->order->only_plan) return 0;
    if (!go_to(source, work->start)) return file_error(301, work->order->name);
    const TransferIn transfer = {work->md, work->info, source, work->order->name, work->order->progress};
    return transfer_in(transfer, &work->done.stopped);
}

// A file of the host that goes away with the object.
class Temporary
{
  public:
    Temporary() : made_(file_open_temp(&file, path_, "wb+") == 1) {}
    ~Temporary()
    {
        if (!made_) return;
        file_close(file);
        file_delete(path_);
    }
    Temporary(const Temporary &) = delete;
    Temporary &operator=(const Temporary &) = delete;

    explicit operator bool() const
    {
        return made_;
    }
    FileHandle file = 0;

  private:
    char path_[FILE_PATH_SIZE] = "";
    bool made_;
};

bool put_head(FileHandle file, const ContentConverter &converter, const InwardState &state)
{
    if (converter.head == nullptr) return true;
    uint8_t head[most_head_bytes];
    const uint32_t bytes = converter.head(&state, head);
    return file_seek(file, 0) == 1 && file_write(file, head, bytes) == static_cast<int32_t>(bytes);
}

// The content made of the source's lines, in a file of its own, whose size is known then.
int32_t convert_source(Work *work, const ContentConverter &converter, FileHandle file, uint64_t *ret_bytes)
{
    const Scratch buffer(text_bytes);
    if (!buffer) return -1;
    Sink sink = file_sink(&file, buffer.bytes(), text_bytes);
    InwardState state = {.sink = &sink, .source_name = work->order->name, .info = work->info};
    if (!convert_lines(work->source, converter, &state)) return -1;
    if (!put_head(file, converter, state)) return file_error(303, work->order->name);
    work->cut = state.cut;
    *ret_bytes = sink.total;
    return 0;
}

int32_t write_converted(Work *work, const ContentConverter &converter)
{
    const Temporary temporary;
    if (!temporary) return file_error(306, work->order->name);
    InsertSource content = {.file = temporary.file};
    if (convert_source(work, converter, temporary.file, &content.size) < 0) return -1;
    if (content.size >= addressable_bytes) return file_error(211, work->info->name);
    content.position = content.size;
    work->info->size = static_cast<uint32_t>(content.size);
    return write_source(work, &content);
}

int32_t write_as_it_is(Work *work)
{
    if (work->source->size - work->start > work->info->size) work->cut = true;
    return write_source(work, work->source);
}

int32_t run(Work *work)
{
    take_text_ending(work);
    complete_entry(work);
    if (work->source->size >= addressable_bytes) return file_error(211, work->info->name);
    if (take_header(work) < 0 || make_way(work) < 0) return -1;
    const ContentConverter *converter = find_converter(work->md->format, work->info->type);
    const bool converting = work->converting && converter != nullptr && converter->line != nullptr;
    return converting ? write_converted(work, *converter) : write_as_it_is(work);
}

bool is_the_image(const MediaDescriptor *md, const InsertSource &source)
{
    if (source.file == 0) return false;
    FileFacts facts = source.facts;
    return (facts.plain || file_calls->facts(source.file, &facts)) && is_image_file(md, facts);
}
}

Insertion insert_from(MediaDescriptor *md, FileInfo *new_file, InsertSource *source, const InsertOrder &order)
{
    constexpr uint16_t forced = INSERT_CONVERT | INSERT_FORCE;
    Work work = {.md = md,
                 .info = new_file,
                 .source = source,
                 .order = &order,
                 .name = order.name,
                 .converting = (order.flags & forced) == forced};
    if (is_the_image(md, *source)) {
        file_error(208, order.name);
        return work.done;
    }
    const int32_t result = run(&work);
    work.done.result = result < 0 ? -1 : static_cast<int32_t>(new_file->location);
    work.done.whole = result >= 0 && !work.done.stopped && !work.cut;
    return work.done;
}

Insertion insert_file(MediaDescriptor *md, FileInfo *new_file, const InsertOrder &order)
{
    InsertSource source;
    if (file_open(&source.file, order.name, "rb", 0) != 1) {
        const uint32_t reason = platform_last_error();
        file_error(300, order.name);
        platform_set_last_error(reason);
        return {};
    }
    Insertion insertion;
    if (file_calls->facts(source.file, &source.facts)) {
        source.size = source.facts.bytes;
        file_get_time(source.file, &new_file->date);
        insertion = insert_from(md, new_file, &source, order);
    } else {
        file_error(211, order.name); // how much room it takes isn't known
    }
    file_close(source.file);
    return insertion;
}

int32_t image_add_file(MediaDescriptor *md, FileInfo *new_file, const char *from_filename, uint16_t flags,
                       ProgressCallback progress)
{
    log_file(3, "image_add_file(md=%lu, new_file=%lu, from_filename=\"%s\", flags=%X, progress=%lu)\n", log_pointer(md),
             log_pointer(new_file), log_text(from_filename), static_cast<unsigned>(flags), log_callback(progress));
    if (md == nullptr || new_file == nullptr || from_filename == nullptr) {
        set_error(103, "Null pointer");
        return -1;
    }
    try {
        return insert_file(md, new_file, {.name = from_filename, .flags = flags, .progress = progress}).result;
    } catch (const std::bad_alloc &) {
        set_error(105, "");
        return -1;
    }
}
