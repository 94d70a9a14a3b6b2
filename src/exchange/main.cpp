#include "exchange/service/command_line.h"

int main(int argc, char **argv)
{
    return zvx::runCommandLine(argc, argv);
}
