/* Settings of the HP-IB boards that a configuration file may change. */
#ifndef TARVO_GPIB_CONTROLLERS_SETTINGS_H
#define TARVO_GPIB_CONTROLLERS_SETTINGS_H

#include <stdint.h>

#include "base/api.h"

#ifdef __cplusplus
extern "C" {
#endif

extern TARVO_API int32_t board_select; /* which of the boards found is used, counted from 0; any value may stand here */
extern TARVO_API uint32_t port_address;   /* the one port address to test, 0: none */
extern TARVO_API int32_t gpib_limit_load; /* not 0: loops that wait give the processor up between two looks */

#ifdef __cplusplus
}
#endif

#endif
