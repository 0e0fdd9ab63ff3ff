// Here a thread can be waited for while its library is being left, so there is nothing to keep.
#include "platform/platform.h"

void platform_keep_library() {}
