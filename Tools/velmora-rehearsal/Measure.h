#pragma once

// Prints how long the views' frames take on this machine: the popover's opening and its moving backdrop at
// sixty frames a second, its first frame cold and warm, and the history scrolled with thirty entries. Gives
// the exit status.
int measureFrames();

// Prints the milliseconds from asking for the first popover of this process to its first frame. Gives the exit status.
int measureFirstFrame();
