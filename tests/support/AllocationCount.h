#pragma once

// How many blocks the calling thread has taken from operator new so far.
//
// Linked on its own (tessarin::allocation_count), since it replaces the operators of the whole
// program.
long AllocationCount();
