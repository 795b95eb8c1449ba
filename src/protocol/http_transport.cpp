#include "protocol/http_transport.h"
