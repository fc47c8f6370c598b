#pragma once

/// So many of the next allocations fail, in all threads but this one, which is spared
/// for good.
void refuseMemory(int times);
int memoryRefusalsLeft();
