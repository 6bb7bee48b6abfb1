// What "export hdf5" says where rectool was built without HDF5.
#include "export.h"
#include "printing/output.h"

namespace RecTool {

ExitCode exportHdf5(const Hdf5ExportOptions& options)
{
    complain(options.output, "This rectool was built without HDF5, which export hdf5 needs.");
    return ExitCode::Usage;
}

}  // namespace RecTool
