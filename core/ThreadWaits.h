#pragma once

// OpenMP worker threads that spin while waiting for the next parallel loop
// starve the other team members when the cores are shared with other
// programs: beside one busy process on two cores, a 2048 x 2048 run that
// takes 1.0 s on idle cores took 2.5 to 3 s with the runtime's default spin
// and 1.5 to 1.9 s with short spins. The OpenMP runtime reads its
// wait settings once, when it is loaded, so when the user has set neither
// OMP_WAIT_POLICY nor GOMP_SPINCOUNT this sets a short spin and starts the
// program again (Linux); otherwise, and when that fails, it returns and the
// program carries on as it is. Call it first thing in main.
void useShortThreadWaits(char** argv);
