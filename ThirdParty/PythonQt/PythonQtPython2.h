/* Lets PythonQt 4, which is written for Python 3, be compiled for Python 2.7.
 *
 * The build puts this header in front of every source file of PythonQt (compiler option -include) and of nothing
 * else: it is not installed, and programs that use PythonQt see Python 2.7's own headers only.
 *
 * Text is the difference that matters. Where PythonQt makes text from a C string, a Python 2 program expects `str`;
 * where it takes text, both `str` (read as UTF-8) and `unicode` must do. A QString stays `unicode`.
 */
#ifndef PYTHONQT_PYTHON2_H
#define PYTHONQT_PYTHON2_H

#include "PythonQtPythonInclude.h"

#include <climits>
#include <cstring>
#include <string>

#if PY_MAJOR_VERSION != 2 || PY_MINOR_VERSION != 7
  #error "this build of PythonQt is for Python 2.7"
#endif

/* ---- text ---- */

inline bool PythonQtPython2_isText(PyObject* object)
{
  return PyString_Check(object) || PyUnicode_Check(object);
}

inline const char* PythonQtPython2_asUtf8(PyObject* object)
{
  if (!PyUnicode_Check(object)) {
    return PyString_AsString(object); // reports a TypeError when it is no text at all
  }
  const Py_UNICODE* characters = PyUnicode_AS_UNICODE(object);
  const Py_ssize_t size = PyUnicode_GET_SIZE(object);
  Py_ssize_t i = 0;
  while (i < size && characters[i] < 128) {
    ++i;
  }
  if (i == size) {
    // Python keeps these bytes as long as the unicode object lives
    PyObject* ascii = _PyUnicode_AsDefaultEncodedString(object, nullptr);
    return ascii ? PyString_AS_STRING(ascii) : nullptr;
  }
  // Python 2 has nowhere to keep the UTF-8 form. Callers copy the text at once, so a few recent ones are enough.
  static PyObject* recent[16];
  static unsigned next = 0;
  PyObject* bytes = PyUnicode_AsUTF8String(object);
  if (!bytes) {
    return nullptr;
  }
  PyObject*& slot = recent[next++ % 16];
  Py_XDECREF(slot);
  slot = bytes;
  return PyString_AS_STRING(bytes);
}

#undef PyUnicode_Check
#undef PyUnicode_FromString
#undef PyUnicode_FromFormat
#define PyUnicode_Check(object) PythonQtPython2_isText(object)
#define PyUnicode_AsUTF8(object) PythonQtPython2_asUtf8(object)
#define PyUnicode_FromString PyString_FromString
#define PyUnicode_FromFormat PyString_FromFormat
#define PyUnicode_New(size, maxchar) PyString_FromStringAndSize(nullptr, size)

/* ---- integers: `int` and `long` are taken, the result is `int` where it fits ---- */

inline bool PythonQtPython2_isInteger(PyObject* object)
{
  return PyInt_Check(object) || PyLong_Check(object);
}

inline bool PythonQtPython2_isExactInteger(PyObject* object)
{
  return PyInt_CheckExact(object) || PyLong_CheckExact(object);
}

inline PyObject* PythonQtPython2_fromUnsigned(unsigned PY_LONG_LONG value)
{
  return value <= (unsigned PY_LONG_LONG)LONG_MAX ? PyInt_FromLong((long)value) : PyLong_FromUnsignedLongLong(value);
}

inline PyObject* PythonQtPython2_fromSigned(PY_LONG_LONG value)
{
  return value >= LONG_MIN && value <= LONG_MAX ? PyInt_FromLong((long)value) : PyLong_FromLongLong(value);
}

inline unsigned PY_LONG_LONG PythonQtPython2_asUnsigned(PyObject* object)
{
  PyObject* number = PyNumber_Long(object); // PyLong_AsUnsignedLongLong refuses `int`
  if (!number) {
    return (unsigned PY_LONG_LONG)-1;
  }
  unsigned PY_LONG_LONG value = PyLong_AsUnsignedLongLong(number);
  Py_DECREF(number);
  return value;
}

#undef PyLong_Check
#undef PyLong_CheckExact
#undef PyLong_AS_LONG
#define PyLong_Check(object) PythonQtPython2_isInteger(object)
#define PyLong_CheckExact(object) PythonQtPython2_isExactInteger(object)
#define PyLong_AsLong(object) PyInt_AsLong(object)
#define PyLong_AS_LONG(object) PyInt_AsLong(object)
#define PyLong_AsUnsignedLongLong(object) PythonQtPython2_asUnsigned(object)
#define PyLong_FromLong(value) PyInt_FromLong(value)
#define PyLong_FromLongLong(value) PythonQtPython2_fromSigned(value)
#define PyLong_FromUnsignedLong(value) PythonQtPython2_fromUnsigned(value)
#define PyLong_FromUnsignedLongLong(value) PythonQtPython2_fromUnsigned(value)

/* ---- types ---- */

// without CHECKTYPES, Python 2 would call the operators only for two objects of one type
enum { PythonQtPython2_defaultFlags = Py_TPFLAGS_DEFAULT | Py_TPFLAGS_CHECKTYPES };
#undef Py_TPFLAGS_DEFAULT
#define Py_TPFLAGS_DEFAULT PythonQtPython2_defaultFlags

#define nb_bool nb_nonzero
#define Py_RETURN_NOTIMPLEMENTED return Py_INCREF(Py_NotImplemented), Py_NotImplemented
#define PyCoro_CheckExact(object) false

inline PyObject* PythonQtPython2_memoryView(char* memory, Py_ssize_t size, int mode)
{
  Py_buffer view;
  if (PyBuffer_FillInfo(&view, nullptr, memory, size, mode == PyBUF_READ, PyBUF_FULL_RO) < 0) {
    return nullptr;
  }
  return PyMemoryView_FromBuffer(&view);
}
#define PyMemoryView_FromMemory(memory, size, mode) PythonQtPython2_memoryView(memory, size, mode)

/* ---- modules ---- */

struct PyModuleDef {
  int m_base;
  const char* m_name;
  const char* m_doc;
  Py_ssize_t m_size;
  PyMethodDef* m_methods;
  void* m_slots;
  void* m_traverse;
  void* m_clear;
  void* m_free;
};
#define PyModuleDef_HEAD_INIT 0

inline PyObject* PyModule_Create(PyModuleDef* definition)
{
  PyObject* module = Py_InitModule3(definition->m_name, definition->m_methods, definition->m_doc);
  Py_XINCREF(module); // Python 2 returns a borrowed reference
  return module;
}

inline PyObject* PyImport_ExecCodeModuleObject(PyObject* name, PyObject* code, PyObject* path, PyObject* /*cached*/)
{
  const char* utf8Path = PythonQtPython2_asUtf8(path);
  return utf8Path
    ? PyImport_ExecCodeModuleEx(PyString_AsString(name), code, const_cast<char*>(utf8Path))
    : nullptr;
}

/* ---- source text ----
 * Without a coding line Python 2 reads u"..." in a char* source as Latin-1; the UTF-8 mark makes it read UTF-8. */

// Returns where "coding" stands in a coding line (PEP 263), npos when there is none in the first two lines.
inline std::string::size_type PythonQtPython2_findCoding(const std::string& source)
{
  std::string::size_type begin = source.compare(0, 3, "\xef\xbb\xbf") == 0 ? 3 : 0;
  for (int line = 0; line < 2 && begin < source.size(); ++line) {
    const std::string::size_type end = source.find_first_of("\r\n", begin);
    const std::string text = source.substr(begin, end == std::string::npos ? end : end - begin);
    const std::string::size_type first = text.find_first_not_of(" \t\f");
    if (first != std::string::npos && text[first] != '#') {
      break; // code
    }
    for (std::string::size_type at = text.find("coding"); at != std::string::npos; at = text.find("coding", at + 1)) {
      const char next = at + 6 < text.size() ? text[at + 6] : '\0';
      if (next == ':' || next == '=') {
        return begin + at;
      }
    }
    if (end == std::string::npos) {
      break;
    }
    begin = source.compare(end, 2, "\r\n") == 0 ? end + 2 : end + 1;
  }
  return std::string::npos;
}

inline std::string PythonQtPython2_marked(const std::string& source)
{
  return source.compare(0, 3, "\xef\xbb\xbf") == 0 ? source : "\xef\xbb\xbf" + source;
}

inline bool PythonQtPython2_isAscii(const std::string& source)
{
  for (char c : source) {
    if ((unsigned char)c > 127) {
      return false;
    }
  }
  return true;
}

// A QString has been decoded already, so that a coding line says nothing about the UTF-8 that PythonQt makes from it.
inline std::string PythonQtPython2_sourceFromText(const char* utf8)
{
  std::string source(utf8);
  if (PythonQtPython2_isAscii(source)) {
    return source;
  }
  const std::string::size_type coding = PythonQtPython2_findCoding(source);
  if (coding != std::string::npos) {
    source[coding] = '_';
  }
  return PythonQtPython2_marked(source);
}

// A file is bytes: its coding line counts, and without one it may still be something other than UTF-8.
inline std::string PythonQtPython2_sourceFromFile(const char* bytes)
{
  const std::string source(bytes);
  if (PythonQtPython2_isAscii(source) || PythonQtPython2_findCoding(source) != std::string::npos) {
    return source;
  }
  PyObject* decoded = PyUnicode_DecodeUTF8(source.data(), (Py_ssize_t)source.size(), nullptr);
  if (!decoded) {
    PyErr_Clear();
    return source;
  }
  Py_DECREF(decoded);
  return PythonQtPython2_marked(source);
}

inline PyObject* PythonQtPython2_compileFile(const char* bytes, PyObject* fileName, int start)
{
  const char* utf8Name = PythonQtPython2_asUtf8(fileName);
  return utf8Name ? Py_CompileString(PythonQtPython2_sourceFromFile(bytes).c_str(), utf8Name, start) : nullptr;
}

inline PyObject* PythonQtPython2_compileText(const char* utf8, const char* fileName, int start)
{
  return Py_CompileString(PythonQtPython2_sourceFromText(utf8).c_str(), fileName, start);
}

inline PyObject* PythonQtPython2_run(const char* utf8, int start, PyObject* globals, PyObject* locals)
{
  return PyRun_StringFlags(PythonQtPython2_sourceFromText(utf8).c_str(), start, globals, locals, nullptr);
}

#undef Py_CompileString
#undef PyRun_String
#define Py_CompileString(source, fileName, start) PythonQtPython2_compileText(source, fileName, start)
#define Py_CompileStringObject(source, fileName, start, flags, optimize) \
  PythonQtPython2_compileFile(source, fileName, start)
#define PyRun_String(source, start, globals, locals) PythonQtPython2_run(source, start, globals, locals)

#define PyEval_EvalCode(code, globals, locals) PyEval_EvalCode((PyCodeObject*)(code), globals, locals)

#endif
