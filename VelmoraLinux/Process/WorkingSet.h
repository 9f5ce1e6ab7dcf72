#pragma once

// Gives memory that is not needed just now back to the system: free heap, and the code that ran and may never
// run again. Code is read from its file once more should it be wanted.
void trimWorkingSet();
