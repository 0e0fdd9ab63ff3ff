// What is done when the library is loaded and when it is left.
#include "base/attach.h"

#include "base/file.h"
#include "base/log_inner.h"
#include "base/memory.h"
#include "base/timing.h"

namespace
{
constexpr uint32_t heap_start_bytes = 0x100000;
}

int32_t library_attach()
{
    file_void();
    file_stdin();
    file_stdout();
    file_stderr();
    get_os_type();
    if (calibrate_nap() == 0) file_printf(Stderr, "[Tarvo] Error: Calibration of short time counter failed\n");
    reset_usec_counter();
    return memory_prepare(heap_start_bytes) != 0 ? 0 : 1;
}

void library_detach()
{
    log_close();
    restore_scheduler();
    if (global_timer != 0) destroy_timer();
    memory_release();
}
