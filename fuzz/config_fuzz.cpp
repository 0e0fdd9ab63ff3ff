// Reads any bytes as a configuration file, and looks at the tables that come of them.
//
// The input: the number of the allocation that fails, 0 for none, then the file.
#include <cstdint>
#include <cstring>

#include "base/convert.h"
#include "base/error.h"
#include "config/config_file.h"
#include "config/config_inner.h"
#include "config/custom_inner.h"
#include "fuzz/support.h"
#include "volume/filetypes.h"

namespace
{

using fuzz::demand;

struct Values {
    int32_t numbers[9] = {};
    uint32_t port = 0;
    char system[CONFIG_SYSTEM_SIZE];
};

int32_t read_file(FileHandle file, Values *values)
{
    int32_t *numbers = values->numbers;
    memset(values->system, 'x', sizeof values->system);
    return read_config_file(file, numbers, numbers + 1, &values->port, numbers + 2, numbers + 3, values->system,
                            numbers + 4, numbers + 5, numbers + 6, numbers + 7, numbers + 8);
}

bool ends_within(const char *text, size_t size)
{
    return memchr(text, '\0', size) != nullptr;
}

// Every row up to the end has texts of its lengths; what stands behind the built-in rows is the file's.
template <typename Row> void look_at(const Row *rows, size_t builtin, size_t most)
{
    size_t count = 0;
    for (; rows[count].name != nullptr; count++) {
        demand(strlen(rows[count].name) <= 16 && strlen(rows[count].description) <= 256);
    }
    demand(count >= builtin && count <= most);
}

void look_at_types()
{
    size_t count = 0;
    for (; custom_liftype_table[count].name[0] != '\0'; count++) {
        const LifType &row = custom_liftype_table[count];
        demand(ends_within(row.name, sizeof row.name) && ends_within(row.system, sizeof row.system));
    }
    demand(count <= MOST_CUSTOM_LIFTYPES);
    uint16_t type = 0;
    set_filetype(FORMAT_LIF, "NOTYPE", "", &type); // goes through all of them
}

}

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    return fuzz::prepare();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const fuzz::MemoryFile file("config");
    fuzz::Input input(data, size);
    const uint8_t failing = input.take_byte();
    if (failing != 0) fuzz::allocations_left = failing - 1u;
    file.store(input.rest());
    Values values;
    set_error(0, "%s", "");
    const int32_t result = read_file(file.handle(), &values);
    fuzz::allocations_left = UINT64_MAX;
    demand(result == 0 || (result == -1 && global_error != 0 && config_fault().line > 0));
    demand(ends_within(values.system, sizeof values.system));
    look_at(custom_media_table, 28, MOST_CUSTOM_MEDIA);
    look_at(custom_drive_table, 47, MOST_CUSTOM_DRIVES);
    use_custom_tables();
    look_at_types();
    use_builtin_tables();
    demand(fuzz::live_blocks == 0);
    return 0;
}
