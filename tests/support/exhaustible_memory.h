// SPDX-License-Identifier: Apache-2.0
// Replaces the global allocation functions so that a test can exhaust the memory.
#pragma once

// Allocations that still succeed; below 0 there is no limit.
extern int allocations_left;
