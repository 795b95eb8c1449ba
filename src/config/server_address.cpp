#include "config/server_address.h"
