#pragma once

#include <QtGlobal>

#include <dlfcn.h>

/// The library's own definition of an exported function that this executable defines as well.
///
/// So a test watches a call from one library to another: the executable's definition goes before
/// the library's, takes a note, and calls this one.
template<class Function>
Function *nextDefinition(const char *mangledName)
{
    void *address = dlsym(RTLD_NEXT, mangledName);
    if (!address)
        qFatal("no library defines %s", mangledName);
    return reinterpret_cast<Function *>(address);
}
