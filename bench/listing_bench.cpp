// A listing through the plug-in, as a file manager makes it: listing_bench PLUGIN IMAGE prints how many entries it got.
#include <dlfcn.h>

#include <cstdio>
#include <cstring>

#include "plugin/plugin.h"

namespace
{

const char *image = "";

int32_t answer_request(int32_t, int32_t kind, char *, char *, char *answer, int32_t size)
{
    if (kind != 0) return 1;
    snprintf(answer, static_cast<size_t>(size), "%s", image);
    return 1;
}

int32_t answer_progress(int32_t, char *, char *, int32_t)
{
    return 0;
}

template <typename Function> Function *find(void *library, const char *name)
{
    return reinterpret_cast<Function *>(dlsym(library, name));
}

}

int main(int count, char **words)
{
    if (count != 3) return 2;
    image = words[2];
    void *library = dlopen(words[1], RTLD_NOW);
    if (library == nullptr) return 1;
    find<decltype(FsInit)>(library, "FsInit")(1, answer_progress, nullptr, answer_request);
    auto *status = find<decltype(FsStatusInfo)>(library, "FsStatusInfo");
    auto *next = find<decltype(FsFindNext)>(library, "FsFindNext");
    FindDataA entry;
    status("/", 0, 1);
    void *handle = find<decltype(FsFindFirst)>(library, "FsFindFirst")("/", &entry);
    if (handle == reinterpret_cast<void *>(~uintptr_t{0})) return 1;
    unsigned long entries = entry.name[0] == '\0' ? 0 : 1;
    while (next(handle, &entry) == 1) entries++;
    find<decltype(FsFindClose)>(library, "FsFindClose")(handle);
    status("/", 1, 1);
    printf("%lu entries\n", entries);
    return 0;
}
