#include "protocol/socket_layer.h"
