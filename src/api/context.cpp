#include "api/context.h"

namespace lumo {

Transaction *currentTransaction = nullptr;

}  // namespace lumo
