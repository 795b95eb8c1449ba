#include "engine/offline_payment.h"
