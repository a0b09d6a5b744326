// The floor for start-up: an empty Qt Widgets window the player's size, in a
// program that links nothing but Qt Widgets. It prints "painted" and its CPU
// milliseconds on the first paint, then quits.
#include "childrun.h"

int main(int argc, char* argv[])
{
    return emptyWindow(argc, argv, [] {});
}
