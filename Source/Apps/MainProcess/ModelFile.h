#pragma once

#include <QString>

#include <functional>

#include "Scene.h"

/// Model files: OBJ and whatever else the library for it reads. From any thread.
namespace ModelFile {

/// Told how far a file is read, in per cent from 0 to 99, in the thread that reads. Returns false to
/// end that.
using Progress = std::function<bool(int)>;

/// Reads a regular file of at most a gibibyte, and what it refers to.
/// @return a model with at least one triangle; without nodes, and *error says why, where that is
///         not possible
Scene::Model read(const QString &file, const Progress &progress, QString *error);

/// Writes the scene without its floor as an OBJ file, with its materials in a file next to it.
/// @return false, and *error says why, where that is not possible
bool write(const Scene &scene, const QString &file, QString *error);

} // namespace ModelFile
