// Before any header of the standard library, as Python's own headers ask for.
#include <PythonQtPythonInclude.h>

#include "oxPythonEnvironment.h"

#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <unistd.h>
#include <vector>

namespace fs = std::filesystem;

namespace {

bool isProgram(const fs::path &file)
{
    std::error_code error;
    return fs::is_regular_file(file, error) && access(file.c_str(), X_OK) == 0;
}

// Bytes all the way, as Python has them: a folder may have any name in any locale.
std::vector<fs::path> programFolders(const std::string &baseFolder)
{
    std::vector<fs::path> folders;
    if (!baseFolder.empty())
        folders.push_back(fs::path(baseFolder) / "bin");
    folders.push_back(fs::path(Py_GetExecPrefix()) / "bin");

    const char *variable = std::getenv("PATH");
    std::istringstream searchPath(variable ? variable : "");
    for (std::string folder; std::getline(searchPath, folder, ':');) {
        if (!folder.empty())
            folders.emplace_back(folder);
    }
    return folders;
}

std::string findInterpreter(const std::string &baseFolder)
{
    const std::string name = "python" + std::to_string(PY_MAJOR_VERSION) + '.' + std::to_string(PY_MINOR_VERSION);
    for (const fs::path &folder : programFolders(baseFolder)) {
        std::error_code error;
        const fs::path program = fs::absolute(folder / name, error);
        if (!error && isProgram(program))
            return program.string();
    }
    return {};
}

} // namespace

void setPythonExecutable(const std::string &baseFolder)
{
    PyObject *program = PyString_FromString(findInterpreter(baseFolder).c_str());
    PySys_SetObject(const_cast<char *>("executable"), program);
    Py_DECREF(program);
}
