// rectool: looks into recording files and edits what was noted in them.
#include <iostream>

#include <system/program.h>

#include "rectool.h"

int main(int argc, char** argv)
{
    System::prepareStandardStreams(System::ClosedStream::RefusesAll);
    std::ios::sync_with_stdio(false);
    return RecTool::CommandLine::run(System::argumentsOf(argc, argv));
}
