// Files of an open medium into files of the host.
#include "volume/extract.h"

#include "base/error.h"
#include "base/log.h"
#include "base/log_pointer.h"

int32_t image_extract_file(MediaDescriptor *md, const FileInfo *info, const char *destination, const char *filename,
                           char *, uint16_t flags, ProgressCallback)
{
    log_file(3,
             "image_extract_file(md=%lu, info=%lu, destination=\"%s\", "
             "filename=\"%s\", flags=%X)\n",
             log_pointer(md), log_pointer(info), log_text(destination), log_text(filename),
             static_cast<unsigned>(flags));
    set_error(109, "copy from a medium");
    return -1;
}
