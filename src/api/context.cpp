#include "api/context.h"

namespace lumo {

Transaction *current_transaction = nullptr;

}  // namespace lumo
