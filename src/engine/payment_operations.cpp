#include "engine/payment_operations.h"
