// rectool: looks into recording files and edits what was noted in them.
#include <iostream>

#include "commandline/program.h"
#include "system/filenames.h"
#include "system/terminal.h"

int main(int argc, char** argv)
{
    RecTool::prepareOutput();
    std::ios::sync_with_stdio(false);
    return RecTool::CommandLine::run(RecTool::argumentsOf(argc, argv));
}
