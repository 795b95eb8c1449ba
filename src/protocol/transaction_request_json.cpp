#include "protocol/transaction_request_json.h"
