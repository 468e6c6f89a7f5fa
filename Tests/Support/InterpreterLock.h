#pragma once

// Before any header of Qt, as Python's own headers ask for.
#include <PythonQtPythonInclude.h>

/// Holds Python's interpreter lock.
class InterpreterLock
{
public:
    InterpreterLock()
        : m_state(PyGILState_Ensure())
    {}
    ~InterpreterLock() { PyGILState_Release(m_state); }

    InterpreterLock(const InterpreterLock &) = delete;
    InterpreterLock &operator=(const InterpreterLock &) = delete;

    /// Whether no thread at all holds it.
    static bool isFree() { return !PyThreadState_GET(); }

    /// Whether the calling thread holds it.
    static bool isHeldHere() { return !isFree() && PyThreadState_GET() == PyGILState_GetThisThreadState(); }

private:
    PyGILState_STATE m_state;
};
