#include "vm/MemoryInterface.h"

CVMMemoryInterface::~CVMMemoryInterface() = default;
