// Files of the host into files of an open medium.
#include "volume/insert.h"

#include "base/error.h"
#include "base/log_pointer.h"

int32_t image_add_file(MediaDescriptor *md, FileInfo *new_file, const char *filename, uint16_t flags,
                       ProgressCallback progress)
{
    log_file(3,
             "image_add_file(md=%lu, new_file=%lu, from_filename=\"%s\", "
             "flags=%X, progress=%lu)\n",
             log_pointer(md), log_pointer(new_file), log_text(filename), static_cast<unsigned>(flags),
             static_cast<unsigned long>(reinterpret_cast<uintptr_t>(progress)));
    set_error(109, "copy to a medium");
    return -1;
}
