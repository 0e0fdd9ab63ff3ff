// Loading and leaving the shared library. This system knows no refusal, so the result of attaching is not asked for.
#include "platform/platform.h"

namespace
{

__attribute__((constructor)) void loaded()
{
    library_attach();
}

__attribute__((destructor)) void left()
{
    library_detach();
}

} // namespace
