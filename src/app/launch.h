#pragma once

// The whole program: reads the command line, hands over to a running player
// or starts one, and runs until it quits. Returns the exit status.
int runPlayer(int argc, char* argv[]);
