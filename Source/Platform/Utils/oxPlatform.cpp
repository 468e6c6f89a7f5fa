#include "oxPlatform.h"

#include <cstdlib>

const char *oxPlatform::getBaseDir()
{
    return std::getenv("OX_BASE_DIR");
}

const char *oxPlatform::getPluginsDir()
{
    return std::getenv("OX_PLUGINS_DIR");
}
