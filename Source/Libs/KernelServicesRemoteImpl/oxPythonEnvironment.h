#pragma once

#include <string>

// What scripts expect of Python's module sys and an embedded interpreter lacks. The caller holds the
// interpreter lock.

/// Sets sys.executable to a program that runs the same version of Python: that of the base folder, of the
/// running library's own installation, or of the search path for programs. Empty when there is none, as
/// Python has it; never the program of this process.
///
/// @param baseFolder the installation folder, whose subfolder "bin" is searched first; may be empty
void setPythonExecutable(const std::string &baseFolder);

/// Gives sys.stdout and sys.stderr of PythonQt what scripts expect of a text stream and PythonQt leaves out.
/// What is written, and how, stays as it is.
void completePythonStreams();
