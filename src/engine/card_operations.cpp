#include "engine/card_operations.h"
