// The verbs of rectool in the order of its help: all that the program knows of them.
#include "registry.h"

#include "commandline/verb.h"

namespace RecTool {

using AddVerb = void(const Syntax& program);  // each at the end of its verb's file
AddVerb addInfo, addTypes, addCat, addState, addDiff, addTrace, addEmissions, addOccupancy, addVerify;
AddVerb addMap, addPlotVerbs, addExportVerbs;
AddVerb addBookmarkVerbs, addRangeVerbs;
AddVerb addCut, addMerge, addRepair, addRecover, addSelfCheck;
AddVerb addArchiveVerbs;

void addVerbs(const Syntax& program)
{
    for (AddVerb* const add :
         {addInfo,      addTypes,  addCat,    addState,     addDiff,        addTrace,         addEmissions,
          addOccupancy, addVerify, addMap,    addPlotVerbs, addExportVerbs, addBookmarkVerbs, addRangeVerbs,
          addCut,       addMerge,  addRepair, addRecover,   addSelfCheck,   addArchiveVerbs}) {
        add(program);
    }
}

}  // namespace RecTool
