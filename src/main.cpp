#include "app/launch.h"

int main(int argc, char* argv[])
{
    return runPlayer(argc, argv);
}
