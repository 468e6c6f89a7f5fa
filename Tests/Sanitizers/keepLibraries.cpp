#include <QtGlobal>

#include <dlfcn.h>

// Libraries stay until the process ends, as far as the address sanitizer looks for leaks: what only the
// globals of a library point to, such as an OpenGL driver's, is no leak of a library that is unloaded.
extern "C" Q_DECL_EXPORT int dlclose(void *) noexcept
{
    return 0;
}
