#pragma once

#include "oxKernelInterfaceRemote.h"
