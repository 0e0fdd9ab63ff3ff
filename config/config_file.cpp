// The configuration file tarvo.ini: found, and refused.
#include "config/config_file.h"

#include "base/error.h"

int32_t read_config_file(FileHandle, int32_t *, int32_t *, uint32_t *, int32_t *, int32_t *, char *, int32_t *,
                         int32_t *, int32_t *, int32_t *, int32_t *)
{
    set_error(109, "configuration file");
    return -1;
}
