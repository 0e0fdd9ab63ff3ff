// The custom tables. Texts of rows that a file has brought hang on one list, and all of them go together.
#include "config/custom_tables.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <span>

#include "base/error.h"
#include "base/memory.h"
#include "config/custom_inner.h"

constinit MediaTableRow custom_media_table[MOST_CUSTOM_MEDIA + 1] = {};
constinit GpibDriveInfo custom_drive_table[MOST_CUSTOM_DRIVES + 1] = {};
constinit LifType custom_liftype_table[MOST_CUSTOM_LIFTYPES + 1] = {};

static_assert(sizeof(MediaTableRow) == 64 && sizeof(GpibDriveInfo) == 72 && sizeof(LifType) == 36);

namespace
{

constexpr uint32_t out_of_memory = 105;

struct KeptText {
    KeptText *next;
};

constinit KeptText *kept_texts = nullptr;

void release_texts()
{
    while (kept_texts != nullptr) {
        KeptText *next = kept_texts->next;
        my_free(kept_texts);
        kept_texts = next;
    }
}

// The texts of rows go behind the rows.
void clear_tables()
{
    std::fill(std::begin(custom_media_table), std::end(custom_media_table), MediaTableRow{});
    std::fill(std::begin(custom_drive_table), std::end(custom_drive_table), GpibDriveInfo{});
    std::fill(std::begin(custom_liftype_table), std::end(custom_liftype_table), LifType{});
    release_texts();
}

}

void copy_builtin_tables()
{
    clear_tables();
    for (size_t i = 0; i < MOST_CUSTOM_MEDIA && default_media_table[i].name != nullptr; i++)
        custom_media_table[i] = default_media_table[i];
    for (size_t i = 0; i < MOST_CUSTOM_DRIVES && default_drive_table[i].name != nullptr; i++)
        custom_drive_table[i] = default_drive_table[i];
    for (size_t i = 0; i < MOST_CUSTOM_LIFTYPES && default_liftype_table[i].name[0] != '\0'; i++)
        custom_liftype_table[i] = default_liftype_table[i];
}

void use_custom_tables()
{
    media_table = custom_media_table;
    drive_table = custom_drive_table;
    liftype_table = custom_liftype_table;
}

void use_builtin_tables()
{
    media_table = default_media_table;
    drive_table = default_drive_table;
    liftype_table = default_liftype_table;
    clear_tables();
}

char *keep_row_text(const char *text, size_t most)
{
    const size_t length = strnlen(text, most);
    auto *kept = static_cast<KeptText *>(my_malloc(sizeof(KeptText) + length + 1));
    if (kept == nullptr) {
        set_error(out_of_memory, "");
        return nullptr;
    }
    kept->next = kept_texts;
    kept_texts = kept;
    char *copy = reinterpret_cast<char *>(kept + 1);
    std::memcpy(copy, text, length);
    copy[length] = '\0';
    return copy;
}
