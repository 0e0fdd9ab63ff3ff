// Settings of the boards as they are at load.
#include "gpib/controllers/settings.h"

constinit int32_t board_select = 0;
constinit uint32_t port_address = 0;
constinit int32_t gpib_limit_load = 1;
