#include "engine/receipt.h"
