// Pointers and 32-bit numbers as log lines and printed texts show them, with %lu.
#pragma once

#include <cstdint>

#include "base/log.h"

inline unsigned long log_pointer(const void *pointer)
{
    return static_cast<unsigned long>(reinterpret_cast<uintptr_t>(pointer));
}

inline const char *log_text(const char *text)
{
    return text == nullptr ? "(null)" : text;
}

inline unsigned long log_callback(ProgressCallback callback)
{
    return static_cast<unsigned long>(reinterpret_cast<uintptr_t>(callback));
}
