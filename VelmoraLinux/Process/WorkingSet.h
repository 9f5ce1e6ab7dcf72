#pragma once

// Returns unused memory to the system: free heap, and pages of program code. The kernel reads code pages
// again from their files when they are needed.
void trimWorkingSet();
