#include "protocol/transaction_json.h"
