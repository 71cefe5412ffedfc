#include "support/RunOffScreen.h"

int main(int argc, char **argv)
{
    return morvane::runOffScreen(argc, argv);
}
