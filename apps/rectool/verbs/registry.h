// All verbs of rectool.
#pragma once

namespace RecTool {

class Syntax;

void addVerbs(const Syntax& program);

}  // namespace RecTool
