// The catalogue: its head, and a line for each entry. Volumes hold tens of thousands of entries, so a line is put
// together in the output's own buffer.
#include "volume/catalogue.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <string_view>

#include "base/convert.h"
#include "base/log.h"
#include "base/output.h"
#include "volume/catalogue_inner.h"
#include "volume/names.h"
#include "volume/navigate.h"
#include "volume/type_text.h"

namespace
{
constexpr size_t longest_line = 256; // all fields of a line at their widest
constexpr uint16_t bdat_98x6 = 0xE961;
constexpr uint32_t half_disk_tracks = 148; // data tracks of the two drives that the head names by a letter
constexpr uint32_t full_disk_tracks = 1458;

class Line
{
  public:
    Line() : start(output_reserve(longest_line)), end(start) {}

    void text(std::string_view value)
    {
        std::memcpy(end, value.data(), value.size());
        end += value.size();
    }

    void left(std::string_view value, size_t width)
    {
        text(value);
        pad(value.size(), width);
    }

    void right(std::string_view value, size_t width)
    {
        pad(value.size(), width);
        text(value);
    }

    void number(uint32_t value, size_t width)
    {
        char digits[16];
        std::to_chars_result result = std::to_chars(digits, digits + sizeof digits, value);
        right({digits, static_cast<size_t>(result.ptr - digits)}, width);
    }

    void finish()
    {
        *end++ = '\n';
        output_advance(static_cast<size_t>(end - start));
    }

  private:
    void pad(size_t length, size_t width)
    {
        if (length >= width) return;
        std::memset(end, ' ', width - length);
        end += width - length;
    }

    char *start;
    char *end;
};

struct EntryTexts {
    char name[VISIBLE_NAME_SIZE];
    char type[type_text_size];
    char date[32];
    char time[32];
};

void take_texts(const MediaDescriptor *md, const FileInfo *info, int32_t date_flag, EntryTexts *texts)
{
    decode_filename(info, md->format, texts->name);
    type_text(info, texts->type);
    get_datetime_strings(&info->date, texts->date, texts->time, date_flag);
}

std::string_view protection(const FileInfo *info)
{
    return (info->attributes & ATTRIBUTE_READ_ONLY) != 0 ? "*" : " ";
}

void print_lif_entry(const MediaDescriptor *md, const FileInfo *info)
{
    EntryTexts texts;
    take_texts(md, info, 0, &texts);
    Line line;
    line.left(texts.name, 10);
    line.text(" ");
    line.text(protection(info));
    line.text("  ");
    line.left(texts.type, 5);
    line.text(" ");
    line.number(info->records, 8);
    line.text(" ");
    line.number(info->record_len * 2, 8);
    line.text(" ");
    // Kept: the address shown of a BDAT file is that of its first data record.  [KeepsBdatAddressBehindItsHeader]
    line.number(info->type == bdat_98x6 ? info->location + 1 : info->location, 9);
    line.text("    ");
    line.right(texts.date, 9);
    line.text(" ");
    line.right(texts.time, 5);
    line.finish();
}

void print_system45_entry(const MediaDescriptor *md, const FileInfo *info)
{
    EntryTexts texts;
    take_texts(md, info, 0, &texts);
    Line line;
    line.left(texts.name, 6);
    line.text("  ");
    line.text(protection(info));
    line.text(" ");
    line.left(texts.type, 5);
    line.number(info->records, 6);
    line.text("   ");
    line.number(info->record_len * 2, 6);
    line.text("     ");
    line.number(info->location, 6);
    line.finish();
}

void print_sdf_entry(const MediaDescriptor *md, const FileInfo *info, uint32_t list_level)
{
    EntryTexts texts;
    take_texts(md, info, 1, &texts);
    char name[32] = "/////";
    size_t shift = list_level >= 2 ? std::min<size_t>(list_level - 1, 5) : 0;
    std::memcpy(name + shift, texts.name, std::strlen(texts.name) + 1);
    name[21] = '\0';
    Line line;
    line.left(name, 21);
    line.text(" ");
    line.number(info->level, 3);
    line.text(" ");
    line.left(info->system_string, 4);
    line.text(" ");
    line.left(texts.type, 5);
    line.text(" ");
    line.number(info->records, 8);
    line.text(" ");
    line.number(info->record_len * 2, 8);
    line.text(" ");
    line.right(texts.date, 9);
    line.text(" ");
    line.right(texts.time, 5);
    line.text(" ");
    line.text((info->attributes & ATTRIBUTE_SYSTEM) == 0 ? "M" : " ");
    line.text((info->attributes & ATTRIBUTE_HIDDEN) == 0 ? "R" : " ");
    line.text((info->attributes & ATTRIBUTE_READ_ONLY) == 0 ? "W" : " ");
    line.finish();
}

void print_system45_header(const MediaDescriptor *md)
{
    output_text("NAME  PRO TYPE REC/FILE  BYTES/REC   ADDRESS\n");
    if (md->format == FORMAT_TAPE45) {
        output_format("T15          %1lu\n\n", static_cast<unsigned long>(md->data_tracks));
        return;
    }
    char letter = '?';
    if (md->data_tracks == half_disk_tracks) letter = 'H';
    if (md->data_tracks == full_disk_tracks) letter = 'M';
    output_format("%c7           %1lu\n\n", letter, static_cast<unsigned long>(md->data_tracks));
}

void print_sdf_header(const MediaDescriptor *md)
{
    uint32_t blocks = md->block_size == 0 ? 0 : md->free_bytes / md->block_size;
    output_format("%s\nLABEL: %s\nFORMAT: SDF\nAVAILABLE SPACE: %lu\n", md->msus, md->label,
                  static_cast<unsigned long>(blocks));
    output_text("                           SYS  FILE   NUMBER   RECORD     MODIFIED    PUB OPEN\n"
                "FILE NAME             LEV TYPE  TYPE  RECORDS   LENGTH DATE       TIME ACC STAT\n"
                "===================== === ==== ===== ======== ======== =============== === ====\n");
}

bool matches(const MediaDescriptor *md, const char *const *filespec, const FileInfo *info)
{
    char name[VISIBLE_NAME_SIZE];
    char type[type_text_size];
    decode_filename(info, md->format, name);
    type_text(info, type);
    return match_filespec(filespec, name, type) != 0;
}

const FileInfo *next_entry(const Selection &selection, const FileInfo *info)
{
    if (!selection.recursive) return info->next;
    if (info->child != nullptr) return info->child;
    const FileInfo *top = selection.list->parent;
    while (info->next == nullptr && info->parent != top) info = info->parent;
    return info->next;
}
}

void print_list_head(const MediaDescriptor *md)
{
    switch (md->format) {
    case FORMAT_DISK45:
    case FORMAT_TAPE45: print_system45_header(md); break;
    case FORMAT_LIF:
        output_format("%s\nVOLUME LABEL: %s\n", md->msus, md->label);
        output_text("FILE NAME PRO TYPE  REC/FILE BYTE/REC   ADDRESS     DATE     TIME\n\n");
        break;
    case FORMAT_SDF: print_sdf_header(md); break;
    default: break;
    }
}

void print_list_header(const MediaDescriptor *md)
{
    print_list_head(md);
    output_flush();
}

void print_list_entry(const MediaDescriptor *md, const FileInfo *info, uint32_t list_level)
{
    switch (md->format) {
    case FORMAT_DISK45:
    case FORMAT_TAPE45: print_system45_entry(md, info); break;
    case FORMAT_LIF: print_lif_entry(md, info); break;
    case FORMAT_SDF: print_sdf_entry(md, info, list_level); break;
    default: break;
    }
}

uint32_t visit_selected(const MediaDescriptor *md, const Selection &selection, EntryVisitor visit, void *context)
{
    const char *const *filespec = selection.filespec;
    // Without patterns all entries match; then only a trace of the calls asks for each.
    bool asks = (filespec != nullptr && filespec[0] != nullptr) || (loglevel & 7) >= 3;
    uint32_t count = 0;
    for (const FileInfo *info = selection.list; info != nullptr; info = next_entry(selection, info)) {
        if (info->deleted != 0 && md->show_purged == 0) continue;
        if (asks && !matches(md, filespec, info)) continue;
        visit(context, md, info);
        count++;
    }
    return count;
}

uint32_t visit_matching(const MediaDescriptor *md, const char *const *filespec, EntryVisitor visit, void *context)
{
    return visit_selected(md, {md->root, filespec, false}, visit, context);
}
