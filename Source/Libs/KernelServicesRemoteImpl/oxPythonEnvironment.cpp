// Before any header of the standard library, as Python's own headers ask for.
#include <PythonQtStdOut.h>

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

PyObject *standardError = nullptr; // sys.stderr of PythonQt

PyObject *fileDescriptor(PyObject *stream, PyObject *)
{
    return PyInt_FromLong(stream == standardError ? STDERR_FILENO : STDOUT_FILENO);
}

PyObject *writeLines(PyObject *stream, PyObject *lines)
{
    PyObject *iterator = PyObject_GetIter(lines);
    if (!iterator)
        return nullptr;
    bool isWritten = true;
    while (PyObject *line = isWritten ? PyIter_Next(iterator) : nullptr) {
        PyObject *result = PyObject_CallMethod(stream, const_cast<char *>("write"), const_cast<char *>("(O)"), line);
        isWritten = result;
        Py_XDECREF(result);
        Py_DECREF(line);
    }
    Py_DECREF(iterator);
    if (PyErr_Occurred())
        return nullptr;
    Py_RETURN_NONE;
}

PyObject *streamName(PyObject *stream, void *)
{
    return PyString_FromString(stream == standardError ? "<stderr>" : "<stdout>");
}

PyMethodDef fileDescriptorMethod{"fileno", fileDescriptor, METH_NOARGS, "the process's own descriptor"};
PyMethodDef writeLinesMethod{"writelines", writeLines, METH_O, "writes each text of a sequence"};
PyGetSetDef nameAttribute{const_cast<char *>("name"), streamName, nullptr, nullptr, nullptr};

void addToStreams(const char *name, PyObject *attribute)
{
    PyDict_SetItemString(PythonQtStdOutRedirectType.tp_dict, name, attribute);
    Py_DECREF(attribute);
}

} // namespace

void setPythonExecutable(const std::string &baseFolder)
{
    PyObject *program = PyString_FromString(findInterpreter(baseFolder).c_str());
    PySys_SetObject(const_cast<char *>("executable"), program);
    Py_DECREF(program);
}

void completePythonStreams()
{
    standardError = PySys_GetObject(const_cast<char *>("stderr"));
    Py_XINCREF(standardError); // Deliberate: never given back, as a script may put another one in its place

    // To the type, as its objects take no attributes.
    addToStreams("fileno", PyDescr_NewMethod(&PythonQtStdOutRedirectType, &fileDescriptorMethod));
    addToStreams("writelines", PyDescr_NewMethod(&PythonQtStdOutRedirectType, &writeLinesMethod));
    addToStreams("name", PyDescr_NewGetSet(&PythonQtStdOutRedirectType, &nameAttribute));
    addToStreams("mode", PyString_FromString("w"));
    // What PythonQt does with text: it is read as UTF-8, and what is none is replaced.
    addToStreams("encoding", PyString_FromString("UTF-8"));
    addToStreams("errors", PyString_FromString("replace"));
    PyType_Modified(&PythonQtStdOutRedirectType);
}
