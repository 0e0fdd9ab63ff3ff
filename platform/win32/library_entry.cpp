// Loading and leaving the dynamic library. A failure to attach keeps it from being loaded. When the whole process ends,
// its other threads are gone already, perhaps with a lock in their hands, and the system takes all back by itself.
#include "platform/platform.h"
#include "platform/win32/inner.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID process_ends);

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID process_ends)
{
    if (reason == DLL_PROCESS_ATTACH) return library_attach() == 0;
    if (reason == DLL_PROCESS_DETACH && process_ends == nullptr) library_detach();
    return TRUE;
}
