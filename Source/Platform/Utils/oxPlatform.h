#pragma once

#include "oxutils_export.h"

/// Where things are on this machine.
///
/// This implementation takes both folders from environment variables; a host's own library
/// knows them from its installation. Safe to call from any thread that does not change the
/// environment.
class OXUTILS_EXPORT oxPlatform
{
public:
    /// The root of the installation, below which lib/python and examples/presentations lie.
    ///
    /// @return the value of OX_BASE_DIR as NUL-terminated UTF-8, owned by the environment;
    ///         null where the variable is unset.
    static const char *getBaseDir();

    /// The folder that holds the plugins; script plugins lie in its subfolder "Scripts".
    ///
    /// @return the value of OX_PLUGINS_DIR as NUL-terminated UTF-8, owned by the environment;
    ///         null where the variable is unset.
    static const char *getPluginsDir();
};
