// The linker hands the plug-in's calls of read_config_file to read_values here, and to the real one what is asked of
// real_reader.
#include "tests/plugin/config_stand_in.h"

#include "base/error.h"
#include "config/config_file.h"
#include "config/custom_inner.h"

extern "C" {

int32_t real_reader(FileHandle file, int32_t *ret_loglevel, int32_t *board, uint32_t *port, int32_t *nosleep,
                    int32_t *fastschedule, char *system, int32_t *filesystem, int32_t *use_file_headers,
                    int32_t *use_type_names, int32_t *use_typed_extensions,
                    int32_t *use_file_conversion) __asm__("__real_read_config_file");

int32_t read_values(FileHandle file, int32_t *ret_loglevel, int32_t *board, uint32_t *port, int32_t *nosleep,
                    int32_t *fastschedule, char *system, int32_t *filesystem, int32_t *use_file_headers,
                    int32_t *use_type_names, int32_t *use_typed_extensions,
                    int32_t *use_file_conversion) __asm__("__wrap_read_config_file");
}

namespace
{

tests::ConfigStandIn *stand_in = nullptr;

}

int32_t read_values(FileHandle file, int32_t *ret_loglevel, int32_t *board, uint32_t *port, int32_t *nosleep,
                    int32_t *fastschedule, char *system, int32_t *filesystem, int32_t *use_file_headers,
                    int32_t *use_type_names, int32_t *use_typed_extensions, int32_t *use_file_conversion)
{
    if (stand_in == nullptr) {
        return real_reader(file, ret_loglevel, board, port, nosleep, fastschedule, system, filesystem, use_file_headers,
                           use_type_names, use_typed_extensions, use_file_conversion);
    }
    stand_in->readings++;
    if (!stand_in->values.readable) {
        set_error(107, "bad assignment in line %d", 5);
        return -1;
    }
    copy_builtin_tables();
    *use_file_headers = stand_in->values.use_file_headers;
    *use_type_names = stand_in->values.use_type_names;
    *use_typed_extensions = stand_in->values.use_typed_extensions;
    *use_file_conversion = stand_in->values.use_file_conversion;
    return 0;
}

namespace tests
{

ConfigStandIn::ConfigStandIn(const ConfiguredValues &wanted) : values(wanted), folder_("\n")
{
    stand_in = this;
}

ConfigStandIn::~ConfigStandIn()
{
    stand_in = nullptr;
    use_builtin_tables();
}

}
