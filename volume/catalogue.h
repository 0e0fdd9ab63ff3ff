/* What is printed of a volume: its summary and the head of its catalogue. */
#ifndef TARVO_VOLUME_CATALOGUE_H
#define TARVO_VOLUME_CATALOGUE_H

#include "base/api.h"
#include "volume/media.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The summary of an open medium, to the engine's output. */
TARVO_API void print_media_info(const MediaDescriptor *md);

/* The head of the catalogue. */
TARVO_API void print_list_header(const MediaDescriptor *md);

#ifdef __cplusplus
}
#endif

#endif
