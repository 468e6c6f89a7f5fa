// Loads a form as C++ code of a host process does: with a loader of its own, and without Python's interpreter lock.
#include <QFile>
#include <QUiLoader>
#include <QWidget>

extern "C" Q_DECL_EXPORT bool loadForm(const char *path, QWidget *parent)
{
    QFile file(QFile::decodeName(path));
    return QUiLoader().load(&file, parent) != nullptr;
}
