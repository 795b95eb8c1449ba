#include "engine/transaction.h"
