#include "memory.h"

namespace explorer {

MemoryBooks memoryBooks;

}  // namespace explorer
