#pragma once

#include "Mesh.h"

/// The shapes that the scene has before a file is loaded. All stand on the floor, which is at y = 0.

MeshPointer makeTorusKnot();
MeshPointer makePedestal();
MeshPointer makeFloor();
