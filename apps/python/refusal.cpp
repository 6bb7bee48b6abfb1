// Complaints as exceptions, and the interpreter's signals.
#include <pybind11/pybind11.h>

#include "refusal.h"

namespace RecPython {

void Kept::require(RecTool::ExitCode code) const
{
    if (code != RecTool::ExitCode::Fine) {
        refuse(code);
    }
}

void Kept::refuse(RecTool::ExitCode code, const std::string& more) const
{
    throw Refusal(code, m_complaints.file(), m_complaints.text() + more);
}

void Patience::look()
{
    const pybind11::gil_scoped_acquire locked;
    if (PyErr_CheckSignals() != 0) {
        throw Interrupted();
    }
}

}  // namespace RecPython
