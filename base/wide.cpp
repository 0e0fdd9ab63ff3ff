// File calls by wide names on systems that have them, and by ANSI names on others.
#include "base/wide.h"

#include <cstring>
#include <cwchar>

#include "platform/platform.h"

constinit int32_t usysychecked = 0;

namespace
{

constexpr int32_t wide_calls = 1;
constexpr int32_t ansi_calls = 2;
constexpr int32_t long_name_size = 1029; // characters with the NUL
constexpr size_t plain_name_size = 260;  // a name of that length and more is lengthened
constexpr int32_t ansi_name_bytes = 259;
constexpr int32_t longest_character = 4; // bytes

constexpr int32_t name_characters = 259; // of a find record, without the NUL
constexpr int32_t alternate_characters = 13;

constexpr wchar_t long_prefix[] = L"\\\\?\\";
constexpr wchar_t unc_prefix[] = L"\\\\?\\UNC";

// A name as the wide calls take it.
struct WideName {
    explicit WideName(const wchar_t *name) : fits(MakeExtraLongNameW(text, name, long_name_size) != 0) {}
    wchar_t text[long_name_size];
    bool fits;
};

// A name as the ANSI calls take it. A part of a name would be another file's, so one that is too long fails.
struct AnsiName {
    explicit AnsiName(const wchar_t *name) : fits(name != nullptr && convert(name) <= ansi_name_bytes) {}
    int32_t convert(const wchar_t *name)
    {
        return platform_wide_to_ansi(text, sizeof(text), name);
    }
    char text[ansi_name_bytes + longest_character + 1];
    bool fits;
};

int32_t with_name(const wchar_t *name, int32_t (*wide_call)(const wchar_t *), int32_t (*ansi_call)(const char *))
{
    if (usys() != 0) {
        const WideName wide(name);
        return wide.fits ? wide_call(wide.text) : 0;
    }
    const AnsiName ansi(name);
    return ansi.fits ? ansi_call(ansi.text) : 0;
}

// The text of a field that may be full to its last character.
template <typename Character, size_t size> struct FieldText {
    explicit FieldText(const Character (&field)[size])
    {
        memcpy(text, field, sizeof(field));
        text[size] = 0;
    }
    Character text[size + 1];
};

template <typename Target, typename Source> void copy_numbers(Target *target, const Source *source)
{
    target->attributes = source->attributes;
    memcpy(target->creation_time, source->creation_time, sizeof(target->creation_time));
    memcpy(target->access_time, source->access_time, sizeof(target->access_time));
    memcpy(target->write_time, source->write_time, sizeof(target->write_time));
    target->size_high = source->size_high;
    target->size_low = source->size_low;
    memcpy(target->reserved, source->reserved, sizeof(target->reserved));
}

} // namespace

int32_t usys(void)
{
    if (usysychecked == 0) usysychecked = platform_has_wide_calls() ? wide_calls : ansi_calls;
    return usysychecked == wide_calls;
}

char *walcopy(char *mb_str, const wchar_t *wstr, int32_t mb_len)
{
    if (mb_str == nullptr || wstr == nullptr) return nullptr;
    if (mb_len >= 0) platform_wide_to_ansi(mb_str, static_cast<size_t>(mb_len) + 1, wstr);
    return mb_str;
}

wchar_t *awlcopy(wchar_t *wstr, const char *mb_str, int32_t wstr_len)
{
    if (wstr == nullptr || mb_str == nullptr) return nullptr;
    if (wstr_len >= 0) platform_ansi_to_wide(wstr, static_cast<size_t>(wstr_len) + 1, mb_str);
    return wstr;
}

size_t wcslcpy(wchar_t *dst, const wchar_t *src, size_t size)
{
    const size_t length = wcslen(src);
    if (size == 0) return length;
    const size_t copied = length < size ? length : size - 1;
    wmemcpy(dst, src, copied);
    dst[copied] = L'\0';
    return length;
}

size_t wcslcat(wchar_t *dst, const wchar_t *src, size_t size)
{
    size_t present = 0;
    while (present < size && dst[present] != L'\0') ++present;
    return present + wcslcpy(dst + present, src, size - present);
}

int32_t MakeExtraLongNameW(wchar_t *out, const wchar_t *name, int32_t max_len)
{
    if (out == nullptr || name == nullptr || max_len <= 0) return 0;
    const wchar_t *prefix = L"";
    const wchar_t *rest = name;
    const size_t length = wcslen(name);
    if (length >= plain_name_size && name[0] == L'\\' && name[1] == L'\\') {
        prefix = unc_prefix;
        rest = name + 1;
    } else if (length >= plain_name_size) {
        prefix = long_prefix;
    }
    const auto size = static_cast<size_t>(max_len);
    wcslcpy(out, prefix, size);
    const bool whole = wcslcat(out, rest, size) < size;
    return whole && length + 4 <= size; // Kept: a name without a prefix needs its room too.  [KeepsRoomForThePrefix]
}

void copyfinddatawa(FindDataA *target, const FindDataW *source)
{
    copy_numbers(target, source);
    walcopy(target->name, FieldText(source->name).text, name_characters);
    walcopy(target->alternate_name, FieldText(source->alternate_name).text, alternate_characters);
}

void copyfinddataaw(FindDataW *target, const FindDataA *source)
{
    copy_numbers(target, source);
    awlcopy(target->name, FieldText(source->name).text, name_characters);
    awlcopy(target->alternate_name, FieldText(source->alternate_name).text, alternate_characters);
}

int32_t CopyFileT(const wchar_t *from, const wchar_t *to, int32_t fail_if_exists)
{
    if (usys() != 0) {
        const WideName wide_from(from);
        const WideName wide_to(to);
        return wide_from.fits && wide_to.fits ? platform_copy_file_w(wide_from.text, wide_to.text, fail_if_exists) : 0;
    }
    const AnsiName ansi_from(from);
    const AnsiName ansi_to(to);
    return ansi_from.fits && ansi_to.fits ? platform_copy_file_a(ansi_from.text, ansi_to.text, fail_if_exists) : 0;
}

int32_t CreateDirectoryT(const wchar_t *name, void *)
{
    return with_name(name, platform_create_directory_w, platform_create_directory_a);
}

int32_t RemoveDirectoryT(const wchar_t *name)
{
    return with_name(name, platform_remove_directory_w, platform_remove_directory_a);
}

int32_t DeleteFileT(const wchar_t *name)
{
    return with_name(name, platform_delete_file_w, platform_delete_file_a);
}

int32_t MoveFileT(const wchar_t *from, const wchar_t *to)
{
    if (usys() != 0) {
        const WideName wide_from(from);
        const WideName wide_to(to);
        return wide_from.fits && wide_to.fits ? platform_move_file_w(wide_from.text, wide_to.text) : 0;
    }
    const AnsiName ansi_from(from);
    const AnsiName ansi_to(to);
    return ansi_from.fits && ansi_to.fits ? platform_move_file_a(ansi_from.text, ansi_to.text) : 0;
}

int32_t SetFileAttributesT(const wchar_t *name, uint32_t attributes)
{
    if (usys() != 0) {
        const WideName wide(name);
        return wide.fits ? platform_set_attributes_w(wide.text, attributes) : 0;
    }
    const AnsiName ansi(name);
    return ansi.fits ? platform_set_attributes_a(ansi.text, attributes) : 0;
}

void *CreateFileT(const wchar_t *name, uint32_t access, uint32_t share, void *, uint32_t disposition, uint32_t flags,
                  void *)
{
    if (usys() != 0) {
        const WideName wide(name);
        return wide.fits ? platform_create_file_w(wide.text, access, share, disposition, flags) : platform_no_handle();
    }
    const AnsiName ansi(name);
    return ansi.fits ? platform_create_file_a(ansi.text, access, share, disposition, flags) : platform_no_handle();
}

uint32_t ExtractIconExT(const wchar_t *file, int32_t index, void **ret_large, void **ret_small, uint32_t count)
{
    if (file == nullptr) return 0;
    if (usys() != 0) return platform_extract_icon_w(file, index, ret_large, ret_small, count);
    const AnsiName ansi(file);
    return ansi.fits ? platform_extract_icon_a(ansi.text, index, ret_large, ret_small, count) : 0;
}

void *FindFirstFileT(const wchar_t *pattern, FindDataW *ret_data)
{
    if (usys() != 0) {
        const WideName wide(pattern);
        return wide.fits ? platform_find_first_w(wide.text, ret_data) : platform_no_handle();
    }
    const AnsiName ansi(pattern);
    if (!ansi.fits) return platform_no_handle();
    FindDataA found;
    void *handle = platform_find_first_a(ansi.text, &found);
    if (handle != platform_no_handle()) copyfinddataaw(ret_data, &found);
    return handle;
}

int32_t FindNextFileT(void *handle, FindDataW *ret_data)
{
    if (usys() != 0) return platform_find_next_w(handle, ret_data);
    FindDataA found;
    if (platform_find_next_a(handle, &found) == 0) return 0;
    copyfinddataaw(ret_data, &found);
    return 1;
}
